#pragma once

#include "base/Subscription.h"
#include "platform/ScreenRect.h"

#include <functional>
#include <optional>

namespace halvo {

class AppSettings;
class AutoGenreController;
class DeviceManager;
class NowPlayingMonitor;
class PresetManager;
class SpectrumData;

enum class PanelMove { immediate, animated };
/// Attached to the status item, or a separate window on a desktop without a tray.
enum class PanelStyle { hanging, window };

/// The services behind the popover. All of them outlive it.
struct PopoverServices {
    DeviceManager& deviceManager;
    PresetManager& presetManager;
    SpectrumData& spectrumData;
    AppSettings& appSettings;
    AutoGenreController& autoGenreController;
    NowPlayingMonitor& nowPlayingMonitor;
};

/// What the panel tells.
struct PanelEvents {
    std::function<void()> onSizeChange; ///< its fitting size has changed
    std::function<void()> onClose;      ///< the person closes it with the keyboard
};

/// The window that hangs from the status item. Main thread only.
class PanelWindow {
  public:
    virtual ~PanelWindow() = default;

    /// The popover over these services, made now or when it is first needed.
    virtual void setContent(const PopoverServices& services, PanelEvents events) = 0;
    /// Hides the window and lets go of the services.
    virtual void removeContent() = 0;
    /// The size that the content wants now.
    virtual ScreenSize fittingSize() = 0;
    /// The screen around a place.
    virtual ScreenArea screenAt(ScreenPoint place) const = 0;

    virtual bool isVisible() const = 0;
    /// Brings the window to the front and gives it the keyboard.
    virtual void orderFront(PanelStyle style) = 0;
    virtual void orderOut() = 0;
    virtual ScreenRect frame() const = 0;
    /// As a `window`, only the size counts: the desktop chooses the place.
    virtual void setFrame(const ScreenRect& frame, PanelMove move) = 0;
    /// Calls `pressed` with the place of every left or right press on the screen, except in the
    /// window's own menus, or without a place when the window lost the keyboard focus to another
    /// program. Other programs still receive the press.
    virtual Subscription
    monitorOutsidePresses(std::function<void(std::optional<ScreenPoint> place)> pressed) = 0;
    /// Whether the last press seen by a monitor is still down, or was released so recently that a
    /// desktop may still report it as a click. False where releases are not seen.
    virtual bool isPressUnderWay() const { return false; }
};

} // namespace halvo
