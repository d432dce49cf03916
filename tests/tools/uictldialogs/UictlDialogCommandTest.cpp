// ukey-uictl's change-pin, new-pin, unblock and label commands run as programs: each starts a
// server on a private display, the keys a person would press answer its dialog, and the
// program prints what the dialog returned.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/NyTestDisplay.h"
#include "support/NyTestProcess.h"
#include "support/NyTestRun.h"
#include "support/NyTestX11.h"

namespace {

constexpr unsigned int NY_WAIT_MS = 30000;

class UictlDialogCommandTest : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(s_pDisplay->Start(true, false)); }
    static void TearDownTestSuite() { s_pDisplay->Stop(); }

    // Runs ukey-uictl with vArgs, waits for the dialog titled strTitle, types vInput into it
    // (xdotool key names, "type:TEXT" for text), and returns what the program printed after
    // checking its exit status.
    std::string Answer(std::vector<std::string> vArgs, const std::string& strTitle,
                       const std::vector<std::string>& vInput, int iExit) {
        vArgs.insert(vArgs.begin(), NyTestBinPath("ukey-uictl"));
        CNyTestRun run(vArgs);
        std::string strWindow = NyTestWaitWindow("^" + strTitle + "$", NY_WAIT_MS);
        EXPECT_FALSE(strWindow.empty()) << "no window titled " << strTitle;
        // The dialog asks for the focus once it is mapped; wait until it has it.
        EXPECT_TRUE(
            NyTestWaitUntil([&] { return NyTestFocusedWindow() == strWindow; }, NY_WAIT_MS));
        for (const std::string& strInput : vInput) {
            if (strInput.compare(0, 5, "type:") == 0) {
                NyTestType(strInput.substr(5));
            } else {
                NyTestKey(strInput);
            }
        }
        EXPECT_EQ(iExit, run.Wait(NY_WAIT_MS));
        return run.Output();
    }

    static CNyTestDisplay* s_pDisplay;
};

CNyTestDisplay* UictlDialogCommandTest::s_pDisplay = new CNyTestDisplay;

TEST_F(UictlDialogCommandTest, EachCommandPrintsWhatItsDialogReturned) {
    const struct {
        std::vector<std::string> vArgs;
        const char* szTitle;
        std::vector<std::string> vInput;
        const char* szExpected;
        int iExit = 0;
    } aCases[] = {
        {{"unblock", "--min", "4", "--max", "16", "--json"},
         "解锁UKey用户密码",
         {"type:admin123", "Tab", "type:5678", "Return"},
         "{\"enRes\":2,\"result\":\"UI_RESULT_OK\",\"soPin\":\"admin123\",\"soPinLength\":8,"
         "\"userPin\":\"5678\",\"userPinLength\":4}\n"},
        {{"label", "--name-min", "1", "--pin-min", "4", "--pin-max", "8"},
         "修改UKey名称",
         {"type:MyKey", "Left Left Left", "type: ", "Tab", "type:1234", "Return"},
         "enRes: 2\nresult: UI_RESULT_OK\nname: My Key\nnameLength: 6\npin: 1234\n"
         "pinLength: 4\n"},
        // A compulsory change refuses the close request and goes on.
        {{"change-pin", "--compulsory", "--kind", "2", "--min", "6", "--max", "16"},
         "修改UKey管理员密码",
         {"alt+F4", "type:abc123", "Tab", "type:x9y8z7", "Tab", "type:x9y8z7", "Return"},
         "enRes: 2\nresult: UI_RESULT_OK\noldPin: abc123\noldPinLength: 6\nnewPin: x9y8z7\n"
         "newPinLength: 6\n"},
        {{"change-pin", "--min", "6", "--max", "16"},
         "修改UKey用户密码",
         {"alt+F4"},
         "enRes: 5\nresult: UI_RESULT_CANCEL\noldPin: \noldPinLength: 0\nnewPin: \n"
         "newPinLength: 0\n",
         1},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.vArgs[0]);
        EXPECT_EQ(c.szExpected, Answer(c.vArgs, c.szTitle, c.vInput, c.iExit));
    }
}

}  // namespace
