#pragma once

#include "base/EQPreset.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// A JSON array of objects with the keys "id", "name", "preamp", "bands" and "isFactory"; numbers
/// in their shortest form. Nothing when a number is not finite, which JSON cannot express.
std::optional<std::string> encodePresets(const std::vector<EQPreset>& presets);

/// Reads what `encodePresets` writes. Nothing unless every key is present with its type and every
/// number fits a 32-bit float. Other keys are ignored.
std::optional<std::vector<EQPreset>> decodePresets(const std::string& json);

} // namespace halvo
