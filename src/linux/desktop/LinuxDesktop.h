#pragma once

#include "linux/desktop/Autostart.h"
#include "linux/desktop/DesktopAppearance.h"
#include "linux/desktop/LinuxStatusItem.h"
#include "qt/QtPanelWindow.h"
#include "qt/WindowAlert.h"

#include <memory>

namespace halvo {

class Application;
class QtMainQueue;

/// What a Linux session with a screen has: the item, the panel, alerts and the desktop's look.
/// Main thread only.
class LinuxDesktop {
  public:
    /// Nothing in a process without a screen.
    static std::unique_ptr<LinuxDesktop> create(QtMainQueue& queue, Application& application);

    LinuxStatusItem& statusItem() { return statusItem_; }
    QtPanelWindow& panelWindow() { return panelWindow_; }
    WindowAlert& alert() { return alert_; }
    /// Whether the panel or a live icon is in sight; when one comes into sight the queue is
    /// stirred.
    bool isWatched() const;
    /// Shows the panel, wherever it is.
    void bringToFront();

  private:
    LinuxDesktop(QtMainQueue& queue, Application& application);
    void applyAppearance();

    WindowAlert alert_;
    QtPanelWindow panelWindow_;
    Autostart autostart_;
    LinuxStatusItem statusItem_;
    DesktopAppearance appearance_;
};

} // namespace halvo
