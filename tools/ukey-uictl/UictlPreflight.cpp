#include "UictlPreflight.h"

#include <sys/stat.h>

#include <cstdlib>

bool UictlCanShowDialogs(const std::string& strServerPath, std::string* pstrError) {
    const char* szDisplay = getenv("DISPLAY");
    if (szDisplay == nullptr || *szDisplay == '\0') {
        *pstrError = "no display to show the dialog on (DISPLAY is not set)";
        return false;
    }
    size_t nSlash = strServerPath.rfind('/');
    std::string strRes =
        (nSlash == std::string::npos ? std::string(".") : strServerPath.substr(0, nSlash)) + "/res";
    struct stat st = {};
    if (stat(strRes.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        *pstrError = "the server's resources are missing (no folder " + strRes + ")";
        return false;
    }
    return true;
}
