#include "UictlOutput.h"

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace {

// Output fields of the commands that have any. A text field has its size in bytes; a number
// field has size 0.
struct BlkUictlFieldTag {
    uint32_t u4CmdFirst;
    uint32_t u4CmdLast;
    const char* szKey;
    uint32_t u4Offset;
    uint32_t u4TextSize;
};

// Message answers (the other offsets are the block's own constants).
constexpr uint32_t MESSAGE_CHOICE_OFFSET = 1348;

const BlkUictlFieldTag s_aFields[] = {
    {UI_CMD_VERIFY_PIN, UI_CMD_GET_PIN_CONFIRM, "pin", UI_OFS_VERIFY_PIN, NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_VERIFY_PIN, UI_CMD_GET_PIN_CONFIRM, "pinLength", UI_OFS_VERIFY_PIN_LEN, 0},
    {UI_CMD_MESSAGE, UI_CMD_MESSAGE, "choice", MESSAGE_CHOICE_OFFSET, 0},
    {UI_CMD_CHANGE_PIN, UI_CMD_CHANGE_PIN_FORCED, "oldPin", UI_OFS_CHANGE_OLD_PIN,
     NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_CHANGE_PIN, UI_CMD_CHANGE_PIN_FORCED, "oldPinLength", UI_OFS_CHANGE_OLD_PIN_LEN, 0},
    {UI_CMD_CHANGE_PIN, UI_CMD_CHANGE_PIN_FORCED, "newPin", UI_OFS_CHANGE_NEW_PIN,
     NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_CHANGE_PIN, UI_CMD_CHANGE_PIN_FORCED, "newPinLength", UI_OFS_CHANGE_NEW_PIN_LEN, 0},
    {UI_CMD_UNBLOCK, UI_CMD_UNBLOCK, "soPin", UI_OFS_UNBLOCK_SO_PIN, NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_UNBLOCK, UI_CMD_UNBLOCK, "soPinLength", UI_OFS_UNBLOCK_SO_PIN_LEN, 0},
    {UI_CMD_UNBLOCK, UI_CMD_UNBLOCK, "userPin", UI_OFS_UNBLOCK_USER_PIN, NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_UNBLOCK, UI_CMD_UNBLOCK, "userPinLength", UI_OFS_UNBLOCK_USER_PIN_LEN, 0},
    {UI_CMD_CHANGE_LABEL, UI_CMD_CHANGE_LABEL, "name", UI_OFS_LABEL_NAME, NY_UI_LABEL_FIELD_SIZE},
    {UI_CMD_CHANGE_LABEL, UI_CMD_CHANGE_LABEL, "nameLength", UI_OFS_LABEL_NAME_LEN, 0},
    {UI_CMD_CHANGE_LABEL, UI_CMD_CHANGE_LABEL, "pin", UI_OFS_LABEL_PIN, NY_UI_PIN_FIELD_SIZE},
    {UI_CMD_CHANGE_LABEL, UI_CMD_CHANGE_LABEL, "pinLength", UI_OFS_LABEL_PIN_LEN, 0},
};

// A field's value, already rendered: quoted for JSON strings, plain for numbers.
struct BlkRenderedTag {
    std::string strKey;
    std::string strValue;
    bool bText;
};

std::string JsonEscape(const std::string& strText) {
    std::string strOut;
    for (unsigned char u1 : strText) {
        if (u1 == '"' || u1 == '\\') {
            strOut += '\\';
            strOut += static_cast<char>(u1);
        } else if (u1 < 0x20) {
            char szEscape[8];
            snprintf(szEscape, sizeof(szEscape), "\\u%04x", u1);
            strOut += szEscape;
        } else {
            strOut += static_cast<char>(u1);
        }
    }
    return strOut;
}

std::string BlockHex(const tagBlkUiParam* pAnswer) {
    static const char s_szDigits[] = "0123456789abcdef";
    const uint8_t* pu1 = NyUiParamBytes(pAnswer, 0);
    std::string strHex;
    strHex.reserve(2 * NY_UI_PARAM_SIZE);
    for (uint32_t i = 0; i < NY_UI_PARAM_SIZE; ++i) {
        strHex += s_szDigits[pu1[i] >> 4];
        strHex += s_szDigits[pu1[i] & 0xF];
    }
    return strHex;
}

std::vector<BlkRenderedTag> RenderFields(const tagBlkUiParam* pAnswer, bool bBlock,
                                         const std::string& strMain) {
    std::vector<BlkRenderedTag> vFields;
    vFields.push_back({"enRes", std::to_string(pAnswer->enRes), false});
    vFields.push_back({"result", UictlResultName(pAnswer->enRes), true});
    for (const BlkUictlFieldTag& field : s_aFields) {
        if (pAnswer->enUiCmdType < field.u4CmdFirst || pAnswer->enUiCmdType > field.u4CmdLast) {
            continue;
        }
        if (field.u4TextSize == 0) {
            vFields.push_back(
                {field.szKey, std::to_string(NyUiParamGetU4(pAnswer, field.u4Offset)), false});
        } else {
            const char* pText =
                reinterpret_cast<const char*>(NyUiParamBytes(pAnswer, field.u4Offset));
            vFields.push_back(
                {field.szKey, std::string(pText, strnlen(pText, field.u4TextSize)), true});
        }
    }
    if (bBlock) {
        vFields.push_back({"block", BlockHex(pAnswer), true});
    }
    if (!strMain.empty()) {
        vFields.push_back({"main", strMain, true});
    }
    return vFields;
}

}  // namespace

const char* UictlResultName(uint32_t u4Result) {
    switch (u4Result) {
        case UI_RESULT_NOT_PROCESSED:
            return "UI_RESULT_NOT_PROCESSED";
        case UI_RESULT_START_FAILED:
            return "UI_RESULT_START_FAILED";
        case UI_RESULT_OK:
            return "UI_RESULT_OK";
        case UI_RESULT_PENDING:
            return "UI_RESULT_PENDING";
        case UI_RESULT_CANCEL:
            return "UI_RESULT_CANCEL";
        default:
            return "UI_RESULT_UNKNOWN";
    }
}

std::string UictlFormatAnswer(const tagBlkUiParam* pAnswer, bool bJson, bool bBlock,
                              const std::string& strMain) {
    std::string strOut = bJson ? "{" : "";
    bool bFirst = true;
    for (const BlkRenderedTag& field : RenderFields(pAnswer, bBlock, strMain)) {
        if (bJson) {
            strOut += bFirst ? "" : ",";
            strOut += "\"" + field.strKey + "\":";
            strOut += field.bText ? "\"" + JsonEscape(field.strValue) + "\"" : field.strValue;
        } else {
            strOut += field.strKey + ": " + field.strValue + "\n";
        }
        bFirst = false;
    }
    return bJson ? strOut + "}\n" : strOut;
}
