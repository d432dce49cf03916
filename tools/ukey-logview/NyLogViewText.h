// Message and source bytes of a record made fit for a UTF-8 terminal or a JSON line.
#pragma once

#include <cstddef>
#include <string>

// The bytes (up to the first NUL, at most cch) as UTF-8: kept when they are UTF-8 already,
// else read as GB18030 (the code page of wide log calls), else with every byte that is not
// part of a valid sequence replaced by U+FFFD.
std::string NyLogViewToUtf8(const char* pch, size_t cch);
// A JSON string literal (quotes included) for UTF-8 text.
std::string NyLogViewJsonString(const std::string& strUtf8);
