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

    // false (with a message on stderr) when Xvfb or a requested helper could not be started.
    bool Start(bool bWindowManager, bool bAccessibility);
    // Ends every process started here, in reverse order, and reaps them.
    void Stop();

    const std::string& Name() const { return m_strName; }  // ":<n>"

private:
    bool StartXvfb();
    bool StartWindowManager();
    bool StartSessionBus();

    std::string m_strName;
    pid_t m_pidXvfb = -1;
    pid_t m_pidWindowManager = -1;
    pid_t m_pidBus = -1;
};
