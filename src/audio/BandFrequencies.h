#pragma once

#include <array>
#include <cstddef>

namespace halvo {

constexpr std::size_t kBandCount = 10;

/// Centre frequencies of the equalizer's bands in Hz, lowest first.
constexpr std::array<float, kBandCount> kBandFrequencies = {
    32.0F, 64.0F, 125.0F, 250.0F, 500.0F, 1000.0F, 2000.0F, 4000.0F, 8000.0F, 16000.0F};

} // namespace halvo
