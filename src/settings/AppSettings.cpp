#include "settings/AppSettings.h"

#include "platform/UserDefaults.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace halvo {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kShowNowPlaying = "halvo_showNowPlaying";
constexpr const char* kShowMenubarWaveform = "halvo_showMenubarWaveform";
constexpr const char* kAccentColorHex = "halvo_accentColorHex";
constexpr const char* kCustomColors = "halvo_customColors";
constexpr const char* kTagNoticeRead = "halvo_tagNoticeRead";

std::string encodeColors(const std::vector<SavedColor>& colors) {
    Json array = Json::array();
    for (const auto& [id, hex, name] : colors) {
        array.push_back({{"id", id.text()}, {"hex", hex}, {"name", name}});
    }
    return array.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<SavedColor> decodeColor(const Json& value) {
    if (!value.is_object()) return std::nullopt;
    for (const auto* key : {"id", "hex", "name"}) {
        if (!value.contains(key) || !value[key].is_string()) return std::nullopt;
    }
    const auto id = UUID::parse(value["id"].get_ref<const std::string&>());
    if (!id) return std::nullopt;
    return SavedColor{*id, value["hex"].get<std::string>(), value["name"].get<std::string>()};
}

/// All of them, or none when one cannot be read.
std::vector<SavedColor> decodeColors(const std::string& json) {
    const Json array = Json::parse(json, nullptr, false);
    if (!array.is_array()) return {};
    std::vector<SavedColor> colors;
    for (const auto& element : array) {
        auto color = decodeColor(element);
        if (!color) return {};
        colors.push_back(std::move(*color));
    }
    return colors;
}

} // namespace

AppSettings::AppSettings(UserDefaults& defaults) : defaults_(defaults) {
    // Presence is tested first so that an explicit "off" survives.
    if (defaults.contains(kShowNowPlaying)) {
        showNowPlaying.set(defaults.boolForKey(kShowNowPlaying));
    }
    if (defaults.contains(kShowMenubarWaveform)) {
        showMenubarWaveform.set(defaults.boolForKey(kShowMenubarWaveform));
    }
    accentColorHex.set(defaults.stringForKey(kAccentColorHex).value_or(kNativeAccent));
    if (const auto colors = defaults.dataForKey(kCustomColors)) {
        customColors.set(decodeColors(*colors));
    }
    tagNoticeRead.set(defaults.boolForKey(kTagNoticeRead));
}

void AppSettings::setShowNowPlaying(bool show) {
    showNowPlaying.set(show);
    defaults_.setBool(kShowNowPlaying, show);
}

void AppSettings::setShowMenubarWaveform(bool show) {
    showMenubarWaveform.set(show);
    defaults_.setBool(kShowMenubarWaveform, show);
}

void AppSettings::setTagNoticeRead(bool read) {
    tagNoticeRead.set(read);
    defaults_.setBool(kTagNoticeRead, read);
}

void AppSettings::setAccentColorHex(const std::string& hex) {
    accentColorHex.set(hex);
    defaults_.setString(kAccentColorHex, accentColorHex.get());
}

std::optional<Color> AppSettings::accentColor() const {
    // "native" does not parse as a colour, so it gives nothing too.
    return Color::parse(accentColorHex.get());
}

void AppSettings::addCustomColor(const std::string& hex, const std::string& name) {
    customColors.modify([&](auto& colors) { colors.push_back({UUID::random(), hex, name}); });
    saveCustomColors();
}

void AppSettings::removeCustomColor(const UUID& id) {
    const UUID removed = id; // the argument may be an element of the list
    customColors.modify([&](auto& colors) {
        std::erase_if(colors, [&](const auto& color) { return color.id == removed; });
    });
    saveCustomColors();
    if (!isKnownAccent(accentColorHex.get())) setAccentColorHex(kNativeAccent);
}

void AppSettings::moveCustomColor(std::size_t from, std::size_t to) {
    const auto count = customColors.get().size();
    if (from == to || from >= count || to >= count) return;
    customColors.modify([&](auto& colors) {
        auto moved = std::move(colors[from]);
        colors.erase(colors.begin() + static_cast<std::ptrdiff_t>(from));
        colors.insert(colors.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
    });
    saveCustomColors();
}

void AppSettings::saveCustomColors() {
    defaults_.setData(kCustomColors, encodeColors(customColors.get()));
}

bool AppSettings::isKnownAccent(const std::string& hex) const {
    // Compares texts: the same colour written differently counts as another one.
    return std::ranges::any_of(factoryColors,
                               [&](const auto& color) { return hex == color.hex; }) ||
           std::ranges::any_of(customColors.get(),
                               [&](const auto& color) { return hex == color.hex; });
}

} // namespace halvo
