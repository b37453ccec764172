#include "app/StatusPanel.h"

#include "app/PanelPlacement.h"
#include "platform/StatusItem.h"

#include <chrono>
#include <utility>

namespace halvo {

namespace {

/// A desktop tells the click on its item when the button comes up again, or later.
constexpr std::chrono::milliseconds kLongestClick{500};

} // namespace

StatusPanel::StatusPanel(const Platform& platform, const PopoverServices& content)
    : window_(platform.panelWindow), item_(platform.statusItem), mainQueue_(platform.mainQueue) {
    PanelEvents events;
    events.onSizeChange = [this, alive = lifetime_.watch()] {
        if (!alive.expired()) resize();
    };
    events.onClose = [this, alive = lifetime_.watch()] {
        if (!alive.expired()) hide();
    };
    window_.setContent(content, std::move(events));
}

StatusPanel::~StatusPanel() {
    removeEventMonitor();
    window_.removeContent();
}

void StatusPanel::toggle() {
    if (window_.isVisible()) return hide();
    if (isPressThatClosed()) return;
    show();
}

void StatusPanel::show() {
    closingPress_.reset();
    const auto item = item_.frame();
    const auto size = window_.fittingSize();
    if (!item) {
        window_.setFrame({0, 0, size.width, size.height}, PanelMove::immediate);
        return window_.orderFront(PanelStyle::window);
    }
    const auto screen = window_.screenAt({item->middleX(), item->middleY()});
    window_.setFrame(hangingPanel(*item, size, screen), PanelMove::immediate);
    window_.orderFront(PanelStyle::hanging);
    eventMonitor_ = window_.monitorOutsidePresses(
        [this](std::optional<ScreenPoint> place) { handlePress(place); });
}

void StatusPanel::hide() {
    window_.orderOut();
    removeEventMonitor();
}

void StatusPanel::resize() {
    if (!window_.isVisible()) return; // the next opening measures anew
    const auto frame = window_.frame();
    const auto size = window_.fittingSize();
    const auto item = item_.frame();
    window_.setFrame(item ? resizedPanel(frame, size, *item,
                                         window_.screenAt({item->middleX(), item->middleY()}))
                          : ScreenRect{frame.x, frame.y, size.width, size.height},
                     PanelMove::animated);
}

void StatusPanel::handlePress(std::optional<ScreenPoint> place) {
    if (!window_.isVisible()) return;
    if (place && window_.frame().contains(*place)) return;
    hide();
    closingPress_ = ClosingPress{place, mainQueue_.now()};
}

/// The press on the item that has just closed the panel must not open it again.
bool StatusPanel::isPressThatClosed() const {
    if (!closingPress_) return false;
    const bool isLate = mainQueue_.now() - closingPress_->time > kLongestClick;
    if (isLate && !window_.isPressUnderWay()) return false;
    const auto item = item_.frame();
    return !closingPress_->place || (item && item->contains(*closingPress_->place));
}

} // namespace halvo
