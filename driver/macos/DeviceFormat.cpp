#include "driver/macos/DeviceFormat.h"

#include "driver/macos/VirtualDevice.h"

#include <algorithm>

namespace halvo::driver {

namespace {

constexpr std::uint32_t kFloat = 1U << 0U;
constexpr std::uint32_t kPacked = 1U << 3U;
constexpr std::uint32_t kFrameSize = RingWriter::kChannels * sizeof(float);

} // namespace

StreamFormatRecord formatAt(double sampleRate) {
    return {.sampleRate = sampleRate,
            .formatID = kind::kLinearPCM,
            .formatFlags = kFloat | kPacked,
            .bytesPerPacket = kFrameSize,
            .framesPerPacket = 1,
            .bytesPerFrame = kFrameSize,
            .channelsPerFrame = RingWriter::kChannels,
            .bitsPerChannel = 8 * sizeof(float),
            .reserved = 0};
}

RangeRecord rangeOf(std::uint32_t rate) {
    return {static_cast<double>(rate), static_cast<double>(rate)};
}

std::optional<std::uint32_t> supportedRate(double sampleRate) {
    const auto found = std::ranges::find_if(VirtualDevice::kRates, [=](std::uint32_t rate) {
        return rangeOf(rate).minimum == sampleRate;
    });
    return found == VirtualDevice::kRates.end() ? std::nullopt : std::optional(*found);
}

} // namespace halvo::driver
