#pragma once

#include "desktop/TrayHost.h"
#include "session/PrivateSession.h"

#include <QGuiApplication>
#include <QImage>
#include <QRect>

#include <memory>
#include <optional>
#include <string>

namespace halvo::desktop {

/// The paths of the programs that a virtual desktop runs.
struct Programs {
    std::string application;
    std::string driver;       ///< the driver's program
    std::string driverBundle; ///< its folder, which holds the version
};

/// A virtual screen with a tray, in a private session with the driver and the application as
/// they are shipped. The calling process becomes part of that session. One per process.
class VirtualDesktop {
  public:
    /// Throws std::runtime_error when a part of it does not start.
    explicit VirtualDesktop(Programs programs);
    ~VirtualDesktop();

    session::PrivateSession& session() { return *session_; }
    TrayHost& tray() { return *tray_; }
    AppearancePortal& portal() { return *portal_; }
    session::SpawnedProgram& application() { return *application_; }
    /// The X11 screen's name.
    const std::string& display() const { return display_; }

    void startDriver();
    void startApplication();
    bool waitForItem();
    /// Ends the application by SIGTERM and waits for its end.
    void stopApplication();

    /// Presses and releases a mouse button at a point, as an input event of the X server.
    void press(QPoint place, int button = 1, std::chrono::milliseconds held = {});
    /// A press and release of a key, by the screen's own number for it.
    void pressKey(int key);
    /// What clicking the item does: a press there, and the desktop's word of it.
    void clickItem(QPoint place, std::chrono::milliseconds held = {});
    QImage grab() const;
    /// The bounds of what differs from the empty screen; empty when nothing does.
    QRect drawnArea() const;
    /// Polls, with Qt's events running, until the condition holds.
    static bool waitFor(const std::function<bool()>& condition,
                        std::chrono::milliseconds deadline = session::PrivateSession::kPatience);
    static void rest(std::chrono::milliseconds time);

  private:
    void startScreen();

    Programs programs_;
    std::unique_ptr<session::PrivateSession> session_;
    std::unique_ptr<session::SpawnedProgram> screen_;
    std::string display_;
    int argc_ = 1;
    char name_[8] = "desktop";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> toolkit_;
    std::unique_ptr<TrayHost> tray_;
    std::unique_ptr<AppearancePortal> portal_;
    std::unique_ptr<session::SpawnedProgram> driver_;
    std::unique_ptr<session::SpawnedProgram> application_;
    QImage bare_;
};

} // namespace halvo::desktop
