#pragma once

#include "platform/StatusItem.h"

#include <memory>

namespace halvo {

class MainQueue;

/// Halvo's item in the menu bar: a button that hosts the live picture. Draws in a later iteration
/// of the main loop, only changes, and only while visible. Main thread only.
class MacStatusItem final : public StatusItem {
  public:
    explicit MacStatusItem(MainQueue& queue);
    ~MacStatusItem() override;

    void show(double length, Draw draw, std::function<void()> action) override;
    void hide() override;
    std::optional<ScreenRect> frame() const override;
    void setNeedsDisplay() override;

    /// Whether a picture that moves with the sound is visible.
    bool isLive() const;
    /// Called when such a picture is first shown.
    std::function<void()> onLive;
    /// Call when the system's accent or light and dark mode has changed.
    void appearanceChanged();

  private:
    struct Parts;

    MainQueue& queue_;
    std::shared_ptr<Parts> parts_; ///< null while there is no item
};

} // namespace halvo
