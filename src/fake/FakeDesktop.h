#pragma once

#include "platform/PanelWindow.h"
#include "platform/StatusItem.h"

#include <functional>
#include <optional>
#include <utility>

namespace halvo {

/// An item in a bar at the top of the screen that the test clicks.
class FakeStatusItem final : public StatusItem {
  public:
    void show(double shownLength, Draw drawn, std::function<void()> clicked) override {
        length = shownLength;
        draw = std::move(drawn);
        action = std::move(clicked);
    }
    void hide() override {
        draw = nullptr;
        action = nullptr;
    }
    std::optional<ScreenRect> frame() const override { return place; }
    void setNeedsDisplay() override { ++redraws; }

    double length = 0;
    Draw draw;
    std::function<void()> action;
    std::optional<ScreenRect> place = ScreenRect{100, 1, 30, 22};
    int redraws = 0;
};

/// A window without content on a screen of 1920 by 1080 with a bar of 24 points at the top.
class FakePanelWindow final : public PanelWindow {
  public:
    void setContent(const PopoverServices& shown, PanelEvents events) override {
        services.emplace(shown);
        onSizeChange = std::move(events.onSizeChange);
        onClose = std::move(events.onClose);
    }
    void removeContent() override {
        visible = false;
        services.reset();
        onSizeChange = nullptr;
        onClose = nullptr;
    }
    ScreenSize fittingSize() override { return content; }
    ScreenArea screenAt(ScreenPoint /*place*/) const override { return screen; }
    bool isVisible() const override { return visible; }
    void orderFront(PanelStyle wanted) override {
        style = wanted;
        visible = true;
    }
    void orderOut() override { visible = false; }
    ScreenRect frame() const override { return place; }
    void setFrame(const ScreenRect& frame, PanelMove move) override {
        place = frame;
        lastMove = move;
    }
    Subscription
    monitorOutsidePresses(std::function<void(std::optional<ScreenPoint>)> handler) override {
        pressed = std::move(handler);
        return Subscription([this] { pressed = nullptr; });
    }

    bool isPressUnderWay() const override { return isHeld; }

    void press(std::optional<ScreenPoint> at) {
        if (const auto handler = pressed) handler(at); // the handler may end its own monitor
    }

    std::optional<PopoverServices> services;
    std::function<void()> onSizeChange;
    std::function<void()> onClose;
    ScreenSize content{320, 200};
    ScreenArea screen{{0, 0, 1920, 1080}, {0, 24, 1920, 1056}};
    bool visible = false;
    PanelStyle style = PanelStyle::hanging;
    ScreenRect place;
    PanelMove lastMove = PanelMove::immediate;
    bool isHeld = false;
    std::function<void(std::optional<ScreenPoint>)> pressed; ///< set while presses are monitored
};

} // namespace halvo
