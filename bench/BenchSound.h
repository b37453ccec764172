#pragma once

#include "demo/StereoSound.h"

#include <array>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace halvo::bench {

constexpr int kFileMinutes = 10;

/// The gains in dB of the factory preset that all measurements use: none of its ten bands is flat.
constexpr const char* kPreset = "Rock";
std::array<float, 10> presetGains();

/// Pink noise with some tones: always the same samples. Its peak is a
/// tenth of full scale, so that no preset takes it beyond. At most `kStretchSeconds` long.
demo::StereoSound stretch(double seconds);
constexpr double kStretchSeconds = 20;

/// Writes `kFileMinutes` of such stretches as a WAV file of 32-bit floats; what failed as a
/// sentence.
std::optional<std::string> writeLongFile(const std::string& path);

/// Reads a stereo file of 48000 frames per second; else a sentence.
std::expected<demo::StereoSound, std::string> readSoundFile(const std::string& path);

} // namespace halvo::bench
