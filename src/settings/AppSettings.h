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

/// How Halvo looks: kept in the user defaults and written back the moment it changes.
/// Main thread only.
class AppSettings {
  public:
    /// The accent text that stands for the system's own accent colour.
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

    /// Loads everything; what is missing or cannot be read has its default.
    explicit AppSettings(UserDefaults& defaults);

    Published<bool> showNowPlaying{true};
    Published<std::string> accentColorHex{kNativeAccent};
    Published<bool> showMenubarWaveform{true};
    Published<std::vector<SavedColor>> customColors;
    /// Whether somebody has read that artists' names go to the tag service.
    Published<bool> tagNoticeRead{false};

    // Each publishes and then writes.
    void setShowNowPlaying(bool show);
    void setShowMenubarWaveform(bool show);
    void setTagNoticeRead(bool read);
    /// Any text is stored; one that is no colour draws in the system's accent colour.
    void setAccentColorHex(const std::string& hex);

    /// The accent to draw with; nothing stands for the system's accent colour.
    std::optional<Color> accentColor() const;

    /// Appends a colour as it is; the accent stays.
    void addCustomColor(const std::string& hex, const std::string& name);
    /// Removes a colour; an accent that no colour carries any more becomes the system's.
    void removeCustomColor(const UUID& id);
    /// Takes the colour out and puts it back at index `to` of the shortened list.
    void moveCustomColor(std::size_t from, std::size_t to);

  private:
    void saveCustomColors();
    bool isKnownAccent(const std::string& hex) const;

    UserDefaults& defaults_;
};

} // namespace halvo
