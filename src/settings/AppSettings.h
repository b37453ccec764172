#pragma once

#include "base/Color.h"
#include "base/Published.h"
#include "settings/SavedColor.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class UserDefaults;

/// Display settings, loaded from the user defaults and saved on each change. Main thread only.
class AppSettings {
  public:
    /// The accent value that means the system's accent colour.
    static constexpr const char* kNativeAccent = "native";

    struct FactoryColor {
        const char* name;
        const char* hex;
    };
    static constexpr std::array<FactoryColor, 7> factoryColors = {{
        {"Native", kNativeAccent},
        {"Purple", "#AF52DE"},
        {"Pink", "#FF2D55"},
        {"Red", "#FF3B30"},
        {"Orange", "#FF9500"},
        {"Green", "#34C759"},
        {"Teal", "#5AC8FA"},
    }};

    /// Loads all settings; missing or unreadable ones keep their defaults.
    explicit AppSettings(UserDefaults& defaults);

    Published<bool> showNowPlaying{true};
    Published<std::string> accentColorHex{kNativeAccent};
    Published<bool> showMenubarWaveform{true};
    Published<std::vector<SavedColor>> customColors;
    /// Whether the user has read the notice that artists' names are sent to the tag service.
    Published<bool> tagNoticeRead{false};

    // Each publishes and then saves.
    void setShowNowPlaying(bool show);
    void setShowMenubarWaveform(bool show);
    void setTagNoticeRead(bool read);
    /// Stores any text; one that is not a colour stands for the system's accent colour.
    void setAccentColorHex(const std::string& hex);

    /// The accent to draw with; nothing means the system's accent colour.
    std::optional<Color> accentColor() const;

    /// Appends a colour; the accent does not change.
    void addCustomColor(const std::string& hex, const std::string& name);
    /// Removes a colour; if no remaining colour has the accent's text, the accent becomes the
    /// system's.
    void removeCustomColor(const UUID& id);
    /// Moves the colour; `to` is its index in the list without it.
    void moveCustomColor(std::size_t from, std::size_t to);

  private:
    void saveCustomColors();
    bool isKnownAccent(const std::string& hex) const;

    UserDefaults& defaults_;
};

} // namespace halvo
