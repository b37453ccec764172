#pragma once

#include "platform/PanelWindow.h"
#include "platform/StatusItem.h"

#include <functional>
#include <utility>

namespace halvo {

/// An item that the test clicks.
class FakeStatusItem final : public StatusItem {
  public:
    void show(double shownLength, std::function<void()> clicked) override {
        length = shownLength;
        action = std::move(clicked);
    }
    ScreenRect frame() const override { return place; }
    void setNeedsDisplay() override { ++redraws; }

    double length = 0;
    std::function<void()> action;
    ScreenRect place{100, 1058, 30, 22};
    int redraws = 0;
};

/// A window without a screen; the test presses beside it.
class FakePanelWindow final : public PanelWindow {
  public:
    bool isVisible() const override { return visible; }
    void orderFront() override { visible = true; }
    void orderOut() override { visible = false; }
    ScreenRect frame() const override { return place; }
    void setFrame(const ScreenRect& frame, PanelMove move) override {
        place = frame;
        lastMove = move;
    }
    Subscription monitorOutsidePresses(std::function<void(double, double)> handler) override {
        pressed = std::move(handler);
        return Subscription([this] { pressed = nullptr; });
    }

    bool visible = false;
    ScreenRect place{0, 0, 340, 400};
    PanelMove lastMove = PanelMove::immediate;
    std::function<void(double, double)> pressed; ///< set while somebody monitors
};

} // namespace halvo
