#include "PresetsFile.h"

#include "SoundFile.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

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
    const nlohmann::ordered_json preset{
        {"id", "7C0F8A52-3B1E-4D6A-9E2B-5A1D0C9F4E11"},
        {"name", name},
        {"preamp", 0.0F},
        {"bands", std::vector<float>(gainsDb.begin(), gainsDb.end())},
        {"isFactory", false}};
    return writeTextFile(path.string(), nlohmann::ordered_json::array({preset}).dump());
}

std::optional<std::string> removePresetsFile(const std::string& dataHome) {
    std::error_code error;
    std::filesystem::remove(presetsPath(dataHome), error);
    if (error) return "cannot remove " + presetsPath(dataHome).string() + ": " + error.message();
    return std::nullopt;
}

std::optional<StoredPreset> readFirstPreset(const std::string& dataHome) {
    std::ifstream file(presetsPath(dataHome));
    try {
        const nlohmann::json preset = nlohmann::json::parse(file).at(0);
        return StoredPreset{.name = preset.at("name").get<std::string>(),
                            .gainsDb = preset.at("bands").get<std::vector<float>>()};
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

} // namespace halvo::demo
