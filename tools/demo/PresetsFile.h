#pragma once

#include "base/EQPreset.h"

#include <optional>
#include <span>
#include <string>

namespace halvo::demo {

/// Writes the application's list of presets under `dataHome` ($XDG_DATA_HOME) with this one preset,
/// on which the application then starts. Gives nothing when it worked, else what failed.
std::optional<std::string> writePresetsFile(const std::string& dataHome, const std::string& name,
                                            std::span<const float> gainsDb);

/// Removes the list: the application then starts as if newly installed.
std::optional<std::string> removePresetsFile(const std::string& dataHome);

/// The first preset of the application's list; nothing when there is none that can be read.
std::optional<EQPreset> readFirstPreset(const std::string& dataHome);

} // namespace halvo::demo
