#pragma once

#include "platform/PanelWindow.h"
#include "platform/StatusItem.h"
#include "platform/StatusPublisher.h"

namespace halvo {

/// The status item of a session without a screen: does nothing.
class NoStatusItem final : public StatusItem {
  public:
    void show(double /*length*/, Draw /*draw*/, std::function<void()> /*action*/) override {}
    void hide() override {}
    std::optional<ScreenRect> frame() const override { return std::nullopt; }
    void setNeedsDisplay() override {}
};

/// The panel of a session without a screen: never opens.
class NoPanelWindow final : public PanelWindow {
  public:
    void setContent(const PopoverServices& /*services*/, PanelEvents /*events*/) override {}
    void removeContent() override {}
    ScreenSize fittingSize() override { return {}; }
    ScreenArea screenAt(ScreenPoint /*place*/) const override { return {}; }
    bool isVisible() const override { return false; }
    void orderFront(PanelStyle /*style*/) override {}
    void orderOut() override {}
    ScreenRect frame() const override { return {}; }
    void setFrame(const ScreenRect& /*frame*/, PanelMove /*move*/) override {}
    Subscription
    monitorOutsidePresses(std::function<void(std::optional<ScreenPoint>)> /*pressed*/) override {
        return {};
    }
};

/// For systems on which no other program can ask.
class NoStatusPublisher final : public StatusPublisher {
  public:
    void setActivePreset(const std::string& /*name*/) override {}
    void setBandLevels(std::span<const float> /*levels*/) override {}
};

} // namespace halvo
