#include "NyGuiTestText.h"

#include <gtest/gtest.h>

#include <cstring>

#include "NyConfigImage.h"

namespace {

constexpr unsigned int NY_GUI_TEST_TEXT_SIZE = 1024;

}  // namespace

std::unique_ptr<CConfig> NyGuiTestConfig() {
    std::unique_ptr<CConfig> pConfig(new CConfig(NyConfigImage(), NyConfigImageLength()));
    unsigned int u4Language = 0;
    pConfig->GetProductLanguage(&u4Language);
    pConfig->SetLanguage(u4Language);
    return pConfig;
}

std::string NyGuiTestText(unsigned int u4Id) {
    std::unique_ptr<CConfig> pConfig = NyGuiTestConfig();
    char szText[NY_GUI_TEST_TEXT_SIZE] = "";
    EXPECT_EQ(0u, pConfig->GetString(u4Id, szText, sizeof(szText))) << std::hex << u4Id;
    return szText;
}

tagBlkUiParam NyGuiTestRequest(uint32_t u4CmdType, uint32_t u4First, uint32_t u4Second) {
    tagBlkUiParam blk;
    memset(&blk, 0, sizeof(blk));
    blk.enUiCmdType = u4CmdType;
    NyUiParamSetU4(&blk, NY_UI_PAYLOAD_OFFSET, u4First);
    NyUiParamSetU4(&blk, NY_UI_PAYLOAD_OFFSET + 4, u4Second);
    return blk;
}
