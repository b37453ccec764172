#pragma once

#include "base/EQPreset.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace halvo::render {

struct Options;

/// The presets that a command line chooses among: of the file that it names; else, unless it wants
/// the factory's alone, the application's list as it shows it, at `ownFile`. The file is only read.
/// The error is a sentence.
std::expected<std::vector<EQPreset>, std::string>
availablePresets(const Options& options, const std::filesystem::path& ownFile);

/// The preset to apply, after `Options::gains` and `Options::preamp`. The error is a sentence, with
/// the names that there are.
std::expected<EQPreset, std::string> choosePreset(const Options& options,
                                                  const std::filesystem::path& ownFile);

/// A line for each preset: name, tabulator, gains in dB, and the preamp where there is one.
std::string presetTable(const std::vector<EQPreset>& presets);

} // namespace halvo::render
