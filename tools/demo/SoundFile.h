#pragma once

#include "StereoSound.h"

#include <optional>
#include <string>

namespace halvo::demo {

/// Writes a sound as a WAV file of 32-bit floats; the file is complete or untouched. Gives nothing
/// when it worked, else a sentence about what failed.
std::optional<std::string> writeSoundFile(const std::string& path, const StereoSound& sound);

/// Writes a text with the same promise.
std::optional<std::string> writeTextFile(const std::string& path, const std::string& text);

} // namespace halvo::demo
