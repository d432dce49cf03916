// A private X display for GUI tests: Xvfb on a display number it picks itself, optionally a
// window manager (openbox) and a private D-Bus session with the accessibility bus, so that
// toolkits export their widgets over AT-SPI. Start() points DISPLAY (and the D-Bus address) of
// this process at it, so that GTK in the test process and every helper program use it.
#pragma once

#include <sys/types.h>

#include <string>

class CNyTestDisplay {
public:
    CNyTestDisplay() = default;
    ~CNyTestDisplay() { Stop(); }
    CNyTestDisplay(const CNyTestDisplay&) = delete;
    CNyTestDisplay& operator=(const CNyTestDisplay&) = delete;

    // Returns once everything asked for runs. When a part cannot start, the test program ends
    // here with the reason and a failing status: a GUI test that cannot run fails, it never
    // reports itself skipped.
    void Start(bool bWindowManager, bool bAccessibility);
    // Ends every process started here, in reverse order, and reaps them.
    void Stop();

    const std::string& Name() const { return m_strName; }  // ":<n>"

private:
    // Ends the test program with the reason unless bStarted.
    void Require(bool bStarted, const char* szReason);
    void StartSessionBus();

    std::string m_strName;
    pid_t m_pidXvfb = -1;
    pid_t m_pidWindowManager = -1;
    pid_t m_pidBus = -1;
};
