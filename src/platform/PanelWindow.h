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
/// Hanging from the status item, or a window of its own on a desktop without items.
enum class PanelStyle { hanging, window };

/// What the popover shows and changes. All of it outlives the content.
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
    /// As `window` the place is the desktop's business, and only the size counts.
    virtual void setFrame(const ScreenRect& frame, PanelMove move) = 0;
    /// Calls `pressed` with the place of every left or right press but those in the window's own
    /// menus, whoever gets it, or without a place when the window lost the keyboard to another
    /// program. The press is not taken from its receiver.
    virtual Subscription
    monitorOutsidePresses(std::function<void(std::optional<ScreenPoint> place)> pressed) = 0;
    /// Whether the last press that a monitor heard goes on, or ended so lately that a desktop may
    /// still report it as a click. False where ends of presses are not heard.
    virtual bool isPressUnderWay() const { return false; }
};

} // namespace halvo
