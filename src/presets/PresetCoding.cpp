#include "presets/PresetCoding.h"

#include "base/NumberText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace halvo {

namespace {

using Json = nlohmann::ordered_json;

/// A float as the double with the same shortest decimal form: 5.24, not 5.239999771118164.
double shortestDouble(float value) {
    return Json::parse(numberText(value)).get<double>();
}

std::optional<float> decodeFloat(const Json& value) {
    if (!value.is_number()) return std::nullopt;
    const auto number = static_cast<float>(value.get<double>());
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

bool isEncodable(const EQPreset& preset) {
    return std::isfinite(preset.preamp) &&
           std::ranges::all_of(preset.bands, [](float gain) { return std::isfinite(gain); });
}

Json encodePreset(const EQPreset& preset) {
    Json bands = Json::array();
    for (const float gain : preset.bands)
        bands.push_back(shortestDouble(gain));
    return {{"id", preset.id.text()},
            {"name", preset.name},
            {"preamp", shortestDouble(preset.preamp)},
            {"bands", std::move(bands)},
            {"isFactory", preset.isFactory}};
}

std::optional<std::vector<float>> decodeBands(const Json& value) {
    if (!value.is_array()) return std::nullopt;
    std::vector<float> bands;
    bands.reserve(value.size());
    for (const auto& element : value) {
        const auto gain = decodeFloat(element);
        if (!gain) return std::nullopt;
        bands.push_back(*gain);
    }
    return bands;
}

std::optional<EQPreset> decodePreset(const Json& value) {
    if (!value.is_object()) return std::nullopt;
    for (const auto* key : {"id", "name", "preamp", "bands", "isFactory"}) {
        if (!value.contains(key)) return std::nullopt;
    }
    const auto& idText = value["id"];
    const auto& name = value["name"];
    const auto& isFactory = value["isFactory"];
    if (!idText.is_string() || !name.is_string() || !isFactory.is_boolean()) return std::nullopt;
    const auto id = UUID::parse(idText.get_ref<const std::string&>());
    const auto preamp = decodeFloat(value["preamp"]);
    auto bands = decodeBands(value["bands"]);
    if (!id || !preamp || !bands) return std::nullopt;
    return EQPreset{*id, name.get<std::string>(), *preamp, std::move(*bands),
                    isFactory.get<bool>()};
}

} // namespace

std::optional<std::string> encodePresets(const std::vector<EQPreset>& presets) {
    if (!std::ranges::all_of(presets, isEncodable)) return std::nullopt;
    Json array = Json::array();
    for (const auto& preset : presets)
        array.push_back(encodePreset(preset));
    return array.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::vector<EQPreset>> decodePresets(const std::string& json) {
    const Json array = Json::parse(json, nullptr, false);
    if (!array.is_array()) return std::nullopt;
    std::vector<EQPreset> presets;
    presets.reserve(array.size());
    for (const auto& element : array) {
        auto preset = decodePreset(element);
        if (!preset) return std::nullopt;
        presets.push_back(std::move(*preset));
    }
    return presets;
}

} // namespace halvo
