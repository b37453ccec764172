#pragma once

#include "base/Lifetime.h"
#include "base/Subscription.h"
#include "platform/MainQueue.h"
#include "platform/PanelWindow.h"
#include "platform/Platform.h"
#include "platform/ScreenRect.h"

#include <optional>

namespace halvo {

/// The panel with the popover's content: opens at the status item, keeps its place there while the
/// content grows, and closes on a press elsewhere. Main thread only.
class StatusPanel {
  public:
    /// Closed at first. The platform must outlive the panel, and what `content` names, too.
    StatusPanel(const Platform& platform, const PopoverServices& content);
    ~StatusPanel();
    StatusPanel(const StatusPanel&) = delete;
    StatusPanel& operator=(const StatusPanel&) = delete;

    /// What a click on the item does.
    void toggle();

  private:
    /// The outside press that closed the panel: the same press may click the item next.
    struct ClosingPress {
        std::optional<ScreenPoint> place;
        MainQueue::Duration time;
    };

    void show();
    void hide();
    void resize();
    void handlePress(std::optional<ScreenPoint> place);
    bool isPressThatClosed() const;
    void removeEventMonitor() { eventMonitor_.cancel(); }

    PanelWindow& window_;
    StatusItem& item_;
    MainQueue& mainQueue_;
    std::optional<ClosingPress> closingPress_;
    Lifetime lifetime_;
    Subscription eventMonitor_; ///< while the panel hangs open
};

} // namespace halvo
