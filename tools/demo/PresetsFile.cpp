#include "PresetsFile.h"

#include "SoundFile.h"

#include "presets/PresetCoding.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace halvo::demo {
namespace {

std::filesystem::path presetsPath(const std::string& dataHome) {
    return std::filesystem::path(dataHome) / "Halvo" / "presets.json";
}

} // namespace

std::optional<std::string> writePresetsFile(const std::string& dataHome, const std::string& name,
                                            std::span<const float> gainsDb) {
    const std::filesystem::path path = presetsPath(dataHome);
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (error) return "cannot create " + path.parent_path().string() + ": " + error.message();
    const auto text = encodePresets({{.name = name, .bands = {gainsDb.begin(), gainsDb.end()}}});
    return text ? writeTextFile(path.string(), *text) : "the gains are no numbers";
}

std::optional<std::string> removePresetsFile(const std::string& dataHome) {
    std::error_code error;
    std::filesystem::remove(presetsPath(dataHome), error);
    if (error) return "cannot remove " + presetsPath(dataHome).string() + ": " + error.message();
    return std::nullopt;
}

std::optional<EQPreset> readFirstPreset(const std::string& dataHome) {
    std::ifstream file(presetsPath(dataHome));
    const auto presets = decodePresets({std::istreambuf_iterator<char>(file), {}});
    if (!presets || presets->empty()) return std::nullopt;
    return presets->front();
}

} // namespace halvo::demo
