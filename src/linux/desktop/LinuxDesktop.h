#pragma once

#include "linux/desktop/DesktopAppearance.h"
#include "linux/desktop/LinuxStatusItem.h"
#include "linux/files/Autostart.h"
#include "qt/QtPanelWindow.h"
#include "qt/WindowAlert.h"

#include <memory>

namespace halvo {

class Application;
class QtMainQueue;

/// The user interface of a Linux session with a screen: item, panel, alerts, appearance. Main
/// thread only.
class LinuxDesktop {
  public:
    /// Null in a process without a screen.
    static std::unique_ptr<LinuxDesktop> create(QtMainQueue& queue, Application& application);

    LinuxStatusItem& statusItem() { return statusItem_; }
    QtPanelWindow& panelWindow() { return panelWindow_; }
    WindowAlert& alert() { return alert_; }
    /// Whether the panel or a live icon is visible. When one becomes visible, the queue is stirred.
    bool isWatched() const;
    /// Shows the panel and brings it to the front.
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
