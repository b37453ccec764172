#pragma once

#include "platform/StatusItem.h"

#include <memory>

namespace halvo {

class MainQueue;

/// Halvo's item in the menu bar: a button that hosts the live picture. Draws in a later turn of the
/// main loop, only what differs from what is shown, and only while somebody can see it. Main thread
/// only.
class MacStatusItem final : public StatusItem {
  public:
    explicit MacStatusItem(MainQueue& queue);
    ~MacStatusItem() override;

    void show(double length, Draw draw, std::function<void()> action) override;
    void hide() override;
    std::optional<ScreenRect> frame() const override;
    void setNeedsDisplay() override;

    /// Whether somebody can see a picture that moves with the sound.
    bool isLive() const;
    /// Called when such a picture is first shown.
    std::function<void()> onLive;
    /// The system's accent or its light and dark are others now.
    void appearanceChanged();

  private:
    struct Parts;

    MainQueue& queue_;
    std::shared_ptr<Parts> parts_; ///< null while there is no item
};

} // namespace halvo
