#pragma once

#include "driver/macos/AudioObject.h"

#include <cstdint>
#include <optional>

namespace halvo::driver {

/// The one format that the device knows, at a rate: interleaved stereo, 32-bit floats of this
/// processor's byte order.
StreamFormatRecord formatAt(double sampleRate);

/// What the device says about a rate that it can run at.
RangeRecord rangeOf(std::uint32_t rate);

/// The rate as one of the device's; nothing for any other.
std::optional<std::uint32_t> supportedRate(double sampleRate);

} // namespace halvo::driver
