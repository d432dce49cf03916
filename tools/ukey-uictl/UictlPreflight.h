// What a dialog needs from a server that ukey-uictl starts itself: a display and the server's
// res/ folder. Checked before the start, so that a missing one is reported as what it is and
// not as an answer of the dialog.
#pragma once

#include <string>

// True when a server at strServerPath can show dialogs; else false with a sentence in *pstrError.
bool UictlCanShowDialogs(const std::string& strServerPath, std::string* pstrError);
