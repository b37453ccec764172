#pragma once

#include "macos/MacAlert.h"
#include "macos/MacAppearance.h"
#include "macos/MacPanelWindow.h"
#include "macos/MacStatusItem.h"

namespace halvo {

class Application;
class QtMainQueue;

/// Halvo's user interface: the item, the panel, alerts. Makes the process an agent, without a Dock
/// icon. Main thread only.
class MacDesktop {
  public:
    MacDesktop(QtMainQueue& queue, Application& application);

    MacAlert& alert() { return alert_; }
    MacStatusItem& statusItem() { return statusItem_; }
    MacPanelWindow& panelWindow() { return panelWindow_; }

    /// Asks other processes of this application to quit and waits for them; true when none is left.
    static bool quitOthers();

  private:
    void applyAppearance();

    MacAlert alert_;
    MacPanelWindow panelWindow_;
    MacStatusItem statusItem_;
    MacAppearance appearance_;
};

} // namespace halvo
