// A log record from the queue as ukey-logview prints it: the text line is valid UTF-8; the JSON
// line is one object of nine fields, valid UTF-8, with every string escaped so that reading the
// message back gives exactly the message text.
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string>

#include <glib.h>

#include "NyFuzzCheck.h"
#include "NyLogViewFormat.h"
#include "NyLogViewText.h"

namespace {

// GLib's validator is the oracle: no overlongs, surrogates, values past U+10FFFF or NUL bytes.
bool IsUtf8(const std::string& str) {
    return g_utf8_validate(str.data(), static_cast<gssize>(str.size()), nullptr) != FALSE;
}

// Reads the JSON string literal that starts at strJson[i] (its opening quote) and returns its
// text; i ends past the closing quote. Aborts on a raw control byte or a bad escape.
std::string ReadJsonString(const std::string& strJson, size_t& i) {
    static const char szEscapes[] = "\"\\/bfnrt";
    static const char szValues[] = "\"\\/\b\f\n\r\t";
    std::string strText;
    for (++i; i < strJson.size() && strJson[i] != '"'; ++i) {
        unsigned char c = strJson[i];
        NyFuzzCheck(c >= 0x20);
        if (c != '\\') {
            strText += static_cast<char>(c);
            continue;
        }
        NyFuzzCheck(++i < strJson.size());
        const char* pEscape = strchr(szEscapes, strJson[i]);
        if (pEscape != nullptr && *pEscape != '\0') {
            strText += szValues[pEscape - szEscapes];
            continue;
        }
        NyFuzzCheck(strJson[i] == 'u' && i + 4 < strJson.size());
        std::string strHex = strJson.substr(i + 1, 4);
        NyFuzzCheck(strHex.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos);
        unsigned long u4Cp = std::stoul(strHex, nullptr, 16);
        NyFuzzCheck(u4Cp < 0x80);  // the viewer escapes control bytes only
        strText += static_cast<char>(u4Cp);
        i += 4;
    }
    NyFuzzCheck(i++ < strJson.size());
    return strText;
}

// Outside strings only the object's punctuation and numbers; returns the message's text.
std::string CheckJson(const std::string& strJson) {
    NyFuzzCheck(IsUtf8(strJson) && strJson.size() >= 2);
    NyFuzzCheck(strJson.front() == '{' && strJson.back() == '}');
    std::string strLast;
    size_t cFields = 0;
    for (size_t i = 1; i + 1 < strJson.size();) {
        unsigned char c = strJson[i];
        if (c == '"') {
            strLast = ReadJsonString(strJson, i);
            continue;
        }
        NyFuzzCheck(c == ':' || c == ',' || isdigit(c));
        cFields += c == ':';
        ++i;
    }
    NyFuzzCheck(cFields == 9);
    return strLast;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pu1Data, size_t cbData) {
    tagBlkLogItem item = {};
    memcpy(&item, pu1Data, cbData < sizeof(item) ? cbData : sizeof(item));

    NyFuzzCheck(IsUtf8(NyLogViewFormatText(item)));
    // The message is the last field of the object.
    NyFuzzCheck(CheckJson(NyLogViewFormatJson(item)) ==
                NyLogViewToUtf8(item.szMessage, sizeof(item.szMessage)));
    return 0;
}
