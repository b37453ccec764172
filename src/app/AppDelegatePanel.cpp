#include "app/AppDelegate.h"
#include "app/PanelPlacement.h"
#include "platform/StatusItem.h"

#include <chrono>
#include <utility>

namespace halvo {

namespace {

constexpr double kStatusItemLength = 30;
/// A desktop tells the click on its item when the button comes up again, or later.
constexpr std::chrono::milliseconds kLongestClick{500};

} // namespace

void AppDelegate::setupStatusItem() {
    auto& item = platform_.statusItem;
    statusView_.onNeedsDisplay = [&item] { item.setNeedsDisplay(); };
    item.show(
        kStatusItemLength, [this](ScreenSize size) { return statusView_.draw(size); },
        [this] { togglePopover(); });
}

void AppDelegate::setupPanel() {
    PanelEvents events;
    events.onSizeChange = [this, alive = lifetime_.watch()] {
        if (!alive.expired()) resizePanel(PanelMove::animated);
    };
    events.onClose = [this, alive = lifetime_.watch()] {
        if (!alive.expired()) hidePanel();
    };
    platform_.panelWindow.setContent({.deviceManager = deviceManager_,
                                      .presetManager = presetManager_,
                                      .spectrumData = spectrumData_,
                                      .appSettings = appSettings_,
                                      .autoGenreController = autoGenreController(),
                                      .nowPlayingMonitor = nowPlayingMonitor_},
                                     std::move(events));
}

void AppDelegate::togglePopover() {
    if (platform_.panelWindow.isVisible()) return hidePanel();
    if (isPressThatClosed()) return;
    showPanel();
}

void AppDelegate::showPanel() {
    auto& panel = platform_.panelWindow;
    closingPress_.reset();
    const auto item = platform_.statusItem.frame();
    const auto size = panel.fittingSize();
    if (!item) {
        panel.setFrame({0, 0, size.width, size.height}, PanelMove::immediate);
        return panel.orderFront(PanelStyle::window);
    }
    const auto screen = panel.screenAt({item->middleX(), item->middleY()});
    panel.setFrame(hangingPanel(*item, size, screen), PanelMove::immediate);
    panel.orderFront(PanelStyle::hanging);
    eventMonitor_ = panel.monitorOutsidePresses(
        [this](std::optional<ScreenPoint> place) { handlePress(place); });
}

void AppDelegate::resizePanel(PanelMove move) {
    auto& panel = platform_.panelWindow;
    if (!panel.isVisible()) return; // the next opening measures anew
    const auto frame = panel.frame();
    const auto size = panel.fittingSize();
    const auto item = platform_.statusItem.frame();
    panel.setFrame(
        item ? resizedPanel(frame, size, *item, panel.screenAt({item->middleX(), item->middleY()}))
             : ScreenRect{frame.x, frame.y, size.width, size.height},
        move);
}

void AppDelegate::hidePanel() {
    platform_.panelWindow.orderOut();
    removeEventMonitor();
}

void AppDelegate::handlePress(std::optional<ScreenPoint> place) {
    const auto& panel = platform_.panelWindow;
    if (!panel.isVisible()) return;
    if (place && panel.frame().contains(*place)) return;
    hidePanel();
    closingPress_ = ClosingPress{place, platform_.mainQueue.now()};
}

/// The press on the item that has just closed the panel must not open it again.
bool AppDelegate::isPressThatClosed() const {
    if (!closingPress_) return false;
    const bool isLate = platform_.mainQueue.now() - closingPress_->time > kLongestClick;
    if (isLate && !platform_.panelWindow.isPressUnderWay()) return false;
    const auto item = platform_.statusItem.frame();
    return !closingPress_->place || (item && item->contains(*closingPress_->place));
}

void AppDelegate::removeEventMonitor() {
    eventMonitor_.cancel();
}

void AppDelegate::removePanel() {
    removeEventMonitor();
    statusView_.onNeedsDisplay = nullptr;
    platform_.statusItem.hide();
    platform_.panelWindow.removeContent();
}

} // namespace halvo
