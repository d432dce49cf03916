#include "UkeyCfgFormat.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "config/NyCfgId.h"
#include "runtime/NyResult.h"

namespace {

uint32_t UkeyCfgReadBytes(BlkCfgHandleTag* hCfg, uint32_t u4Id, std::vector<unsigned char>* pv) {
    unsigned int u4Length = 0;
    uint32_t u4Result = NyCfgGetValue(hCfg, u4Id, nullptr, &u4Length);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    pv->assign(size_t(u4Length) + 1, 0);
    u4Result = NyCfgGetValue(hCfg, u4Id, pv->data(), &u4Length);
    pv->resize(u4Length);
    return u4Result;
}

uint32_t UkeyCfgReadText(BlkCfgHandleTag* hCfg, uint32_t u4Id, std::string* pstrValue) {
    unsigned int u4Length = 0;
    uint32_t u4Result = NyCfgGetString(hCfg, u4Id, nullptr, &u4Length);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    std::vector<char> vText(u4Length, 0);
    u4Result = NyCfgGetString(hCfg, u4Id, vText.data(), &u4Length);
    if (u4Result == NY_OK) {
        pstrValue->assign(vText.data());
    }
    return u4Result;
}

std::string UkeyCfgHexBytes(const std::vector<unsigned char>& vBytes) {
    std::string str;
    char szByte[4];
    for (unsigned char u1 : vBytes) {
        snprintf(szByte, sizeof(szByte), str.empty() ? "%02X" : " %02X", u1);
        str += szByte;
    }
    return str;
}

}  // namespace

std::string UkeyCfgTypeName(uint32_t u4Type) {
    static const char* const aszNames[] = {"raw", "text", "u8", "u16", "u32"};
    if (u4Type < sizeof(aszNames) / sizeof(aszNames[0])) {
        return aszNames[u4Type];
    }
    return "type" + std::to_string(u4Type);
}

uint32_t UkeyCfgReadValue(BlkCfgHandleTag* hCfg, uint32_t u4Id, bool bRaw, std::string* pstrValue) {
    uint32_t u4Type = NyCfgIdType(u4Id);
    if (u4Type == NY_CFG_TYPE_TEXT && !bRaw) {
        return UkeyCfgReadText(hCfg, u4Id, pstrValue);
    }
    if (u4Type >= NY_CFG_TYPE_U1 && u4Type <= NY_CFG_TYPE_U4) {
        unsigned int u4Value = 0;
        uint32_t u4Result = NyCfgGetU4(hCfg, u4Id, &u4Value);
        *pstrValue = std::to_string(u4Value);
        return u4Result;
    }
    std::vector<unsigned char> vBytes;
    uint32_t u4Result = UkeyCfgReadBytes(hCfg, u4Id, &vBytes);
    if (u4Type == NY_CFG_TYPE_TEXT) {
        pstrValue->assign(vBytes.begin(), vBytes.end());
        pstrValue->resize(strnlen(pstrValue->c_str(), pstrValue->size()));
    } else {
        *pstrValue = UkeyCfgHexBytes(vBytes);
    }
    return u4Result;
}

std::string UkeyCfgDescribeFailure(uint32_t u4Id, uint32_t u4Result) {
    char szId[16];
    snprintf(szId, sizeof(szId), "0x%08X", u4Id);
    switch (u4Result) {
        case NY_ERR_NOT_FOUND:
            return std::string("no entry ") + szId;
        case NY_ERR_BAD_ARGUMENT:
            return std::string(szId) + " is stored with another type";
        case NY_ERR_BUFFER_TOO_SMALL:
            return std::string(szId) + " does not expand within the text limits";
        default:
            break;
    }
    char szResult[16];
    snprintf(szResult, sizeof(szResult), "%08X", u4Result);
    return std::string(szId) + " cannot be read (result " + szResult + ")";
}

std::string UkeyCfgEscape(const std::string& strText) {
    std::string str;
    for (char c : strText) {
        switch (c) {
            case '\\':
                str += "\\\\";
                break;
            case '\r':
                str += "\\r";
                break;
            case '\n':
                str += "\\n";
                break;
            case '\t':
                str += "\\t";
                break;
            default:
                str += c;
                break;
        }
    }
    return str;
}
