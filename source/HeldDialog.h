// The dialog a UI service holds, with the configuration accessor it was built over. Owns both
// and destroys them together, never while the dialog is still running on its own thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "CConfig.h"
#include "os/NyThread.h"
#include "ui/GUIBase.h"

class CHeldDialog {
public:
    CHeldDialog(std::unique_ptr<CConfig> pConfig, std::unique_ptr<GUIBase> pDialog);
    // Stops a dialog still running on its own thread and waits until its run has returned
    // (its window is then gone and no dialog code runs on it any more), then destroys it.
    ~CHeldDialog();
    CHeldDialog(const CHeldDialog&) = delete;
    CHeldDialog& operator=(const CHeldDialog&) = delete;

    GUIBase* Dialog() const { return m_pDialog.get(); }
    // True while a run started by StartThread has not returned.
    bool IsRunning() const { return m_bRunning.load(); }

    // Runs the dialog on the calling thread until it ends. While it runs, fnClientAlive is
    // asked every u4WatchMs from a watcher thread; once it answers false the dialog is stopped
    // (a run never outlives the client it answers).
    uint32_t RunHere(const std::function<bool()>& fnClientAlive, uint32_t u4WatchMs);
    // Starts pfnEntry(this) on a thread of its own; the entry calls RunOnThread and then
    // EndThreadRun.
    uint32_t StartThread(PFN_NY_THREAD_ENTRY pfnEntry);
    // Runs the dialog on the thread started by StartThread.
    uint32_t RunOnThread();
    // Marks that thread's run as returned. The thread must not touch this object afterwards:
    // it may be destroyed at once.
    void EndThreadRun() { m_bRunning.store(false); }

    // Stops a dialog running on its own thread and waits until its run has returned; nothing
    // for a dialog that is not running.
    void StopAndWaitForRun();

private:
    std::unique_ptr<CConfig> m_pConfig;
    std::unique_ptr<GUIBase> m_pDialog;  // declared after the config: destroyed before it
    std::atomic<bool> m_bRunning{false};
};
