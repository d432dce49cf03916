#include "NyGuiTestEnv.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <chrono>
#include <cstring>

#include "support/NyTestDisplay.h"
#include "support/NyTestProcess.h"
#include "support/NyTestX11.h"

// Last: its macros (None, Bool, ...) clash with names in the headers above.
#include <X11/Xlib.h>

namespace {

// One display per test program run; GTK is started once, as the server starts it.
class CGuiTestEnvironment : public testing::Environment {
public:
    void SetUp() override {
        m_display.Start(true, true);
        XInitThreads();
        g_thread_init(nullptr);
        gdk_threads_init();
        ASSERT_TRUE(gtk_init_check(nullptr, nullptr));
    }
    void TearDown() override {
        GdkDisplay* pDisplay = gdk_display_get_default();
        if (pDisplay != nullptr) {
            gdk_display_close(pDisplay);
        }
        m_display.Stop();
    }

private:
    CNyTestDisplay m_display;
};

testing::Environment* const g_pEnvironment =
    testing::AddGlobalTestEnvironment(new CGuiTestEnvironment);

}  // namespace

CGuiTestRun::CGuiTestRun(GUIBase* pDialog) : m_pDialog(pDialog) {
    m_thread = std::thread([this] {
        m_u4Result = m_pDialog->run();
        m_bDone = true;
    });
}

CGuiTestRun::~CGuiTestRun() {
    if (!Wait(NY_GUI_TEST_WAIT_MS)) {
        m_pDialog->stop();
    }
    m_thread.join();
}

bool CGuiTestRun::Wait(unsigned int u4TimeoutMs) {
    return NyTestWaitUntil([this] { return m_bDone; }, u4TimeoutMs);
}

tagBlkUiParam NyGuiTestResponse(GUIBase* pDialog) {
    tagBlkUiParam blk;
    memset(&blk, 0xAA, sizeof(blk));
    unsigned int u4Len = sizeof(blk);
    EXPECT_EQ(0u, pDialog->GetResponse(reinterpret_cast<unsigned char*>(&blk), &u4Len));
    EXPECT_EQ(NY_UI_PARAM_SIZE, u4Len);
    return blk;
}

std::vector<BlkTestAccessibleTag> NyGuiTestTree() {
    return NyTestAccessibleTree(getpid());
}

bool NyGuiTestWaitFor(const std::string& strRole, const std::string& strName,
                      BlkTestAccessibleTag* pFound) {
    return NyTestWaitAccessible(getpid(), strRole, strName, NY_GUI_TEST_WAIT_MS, pFound);
}

void NyGuiTestClick(const BlkTestAccessibleTag& blk, unsigned int u4Button) {
    NyTestClickAt(blk.CentreX(), blk.CentreY(), u4Button);
}

// Under the leak checker: fontconfig and cairo keep process-wide caches (font sets, surface
// pools) that they never free; everything else must be released.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n"
           "leak:libcairo.so\n";
}
