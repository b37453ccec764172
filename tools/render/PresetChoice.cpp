#include "render/PresetChoice.h"

#include "base/NumberText.h"
#include "presets/FactoryPresets.h"
#include "presets/PresetCoding.h"
#include "render/Options.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

namespace halvo::render {

namespace {

namespace fs = std::filesystem;
using Presets = std::vector<EQPreset>;

constexpr std::uintmax_t kLargestFile = 64U << 20U;

std::expected<std::string, std::string> contentsOf(const fs::path& path) {
    const auto failure = [&](const std::string& why) {
        return std::unexpected("cannot read the presets in " + path.string() + ": " + why);
    };
    std::error_code error;
    const auto status = fs::status(path, error);
    if (error) return failure(error.message());
    if (!fs::is_regular_file(status)) return failure("it is not a file");
    if (fs::file_size(path, error) > kLargestFile) return failure("it is too large");
    std::ifstream file(path, std::ios::binary);
    if (!file) return failure("you may not open it");
    return std::string{std::istreambuf_iterator<char>(file), {}};
}

std::expected<Presets, std::string> readPresets(const fs::path& path) {
    const auto contents = contentsOf(path);
    if (!contents) return std::unexpected(contents.error());
    auto presets = decodePresets(*contents);
    if (presets) return std::move(*presets);
    return std::unexpected(path.string() +
                           " is not a list of presets as Halvo writes it; choose another with "
                           "--presets-file, or --factory");
}

/// The application's list: its file, and the factory's presets whose names that lacks.
std::expected<Presets, std::string> ownPresets(const fs::path& path) {
    Presets presets;
    std::error_code error;
    if (fs::exists(path, error)) {
        auto own = readPresets(path);
        if (!own) return own;
        presets = std::move(*own);
    }
    for (auto& preset : defaultPresets()) {
        if (std::ranges::find(presets, preset.name, &EQPreset::name) == presets.end())
            presets.push_back(std::move(preset));
    }
    return presets;
}

std::string folded(std::string text) {
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

/// The edit distance: how many letters to insert, delete or replace.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = i;
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t corner = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = corner + (from[i] == to[j] ? 0 : 1);
            corner = std::exchange(row[j + 1], std::min({replaced, row[j] + 1, row[j + 1] + 1}));
        }
    }
    return row.back();
}

std::optional<std::string> nearestName(const Presets& presets, const std::string& wanted) {
    std::size_t least = wanted.size() / 3 + 1; // farther away it is another word
    std::optional<std::string> nearest;
    for (const auto& preset : presets) {
        const auto steps = distance(folded(preset.name), folded(wanted));
        if (steps >= least + (nearest ? 0U : 1U)) continue;
        least = steps;
        nearest = preset.name;
    }
    return nearest;
}

std::string unknownName(const Presets& presets, const std::string& wanted) {
    std::string text = "there is no preset \"" + wanted + "\"";
    if (const auto nearest = nearestName(presets, wanted))
        text += "; did you mean \"" + *nearest + "\"?";
    text += "\nThere are: ";
    for (std::size_t i = 0; i < presets.size(); ++i)
        text += (i == 0 ? "" : ", ") + presets[i].name;
    return text;
}

} // namespace

std::expected<Presets, std::string> availablePresets(const Options& options,
                                                     const fs::path& ownFile) {
    if (options.factoryOnly) return defaultPresets();
    if (options.presetsFile) return readPresets(*options.presetsFile);
    return ownPresets(ownFile);
}

std::expected<EQPreset, std::string> choosePreset(const Options& options, const fs::path& ownFile) {
    EQPreset chosen;
    if (options.preset) {
        const auto presets = availablePresets(options, ownFile);
        if (!presets) return std::unexpected(presets.error());
        const auto found = std::ranges::find(*presets, *options.preset, &EQPreset::name);
        if (found == presets->end()) return std::unexpected(unknownName(*presets, *options.preset));
        chosen = *found;
    }
    if (options.gains) chosen.bands.assign(options.gains->begin(), options.gains->end());
    if (options.preamp) chosen.preamp = *options.preamp;
    return chosen;
}

std::string presetTable(const Presets& presets) {
    std::string text;
    for (const auto& preset : presets) {
        text += preset.name + "\t";
        for (const float gain : preset.bands)
            text += numberText(gain) + " ";
        if (preset.preamp != 0) text += "(preamp " + numberText(preset.preamp) + ")";
        while (text.back() == ' ')
            text.pop_back();
        text += "\n";
    }
    return text;
}

} // namespace halvo::render
