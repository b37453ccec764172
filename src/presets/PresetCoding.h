#pragma once

#include "base/EQPreset.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// A JSON array of objects with the keys "id", "name", "preamp", "bands" and "isFactory"; numbers
/// in their shortest form. Nothing when a number is not finite: JSON has no word for it.
std::optional<std::string> encodePresets(const std::vector<EQPreset>& presets);

/// Reads what `encodePresets` writes. Every key must be there in its type and every number must fit
/// a 32-bit float, else nothing is read; other keys are ignored.
std::optional<std::vector<EQPreset>> decodePresets(const std::string& json);

} // namespace halvo
