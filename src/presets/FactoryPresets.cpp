#include "presets/FactoryPresets.h"

#include <array>

namespace halvo {

namespace {

struct FactoryPreset {
    const char* name;
    std::array<float, 10> bands; // dB, lowest band first
};

// The uneven values are intended. Genres map to these names.
constexpr std::array<FactoryPreset, 23> kFactoryPresets = {{
    {"R&B", {5.24F, 13.84F, 11.3F, 2.66F, -4.38F, -3, 4.64F, 5.3F, 6, 7.5F}},
    {"Hip-Hop", {10, 8.5F, 3, 6, -2, -2, 3, -1, 4, 6}},
    {"Rock", {10, 8, 6, 3, -1, -2, 1, 5, 7, 9}},
    {"Jazz", {8, 6, 3, 4.5F, -3, -3, 0, 3, 6, 7.5F}},
    {"Pop", {-3, -2, 0, 4, 8, 8, 4, 0, -2, -3}},
    {"Flat", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"Acoustic", {-8.3F, 9.8F, -15.68F, 2.1F, 18.22F, 3.5F, 7, 8.2F, 7.1F, 4.3F}},
    {"Bass Booster", {11, 8.5F, 7, 5, 2.5F, 0, 0, 0, 0, 0}},
    {"Bass Reducer", {-11, -8.5F, -7, -5, -2.5F, 0, 0, 0, 0, 0}},
    {"Classic", {9.5F, 7.5F, 6, 5, -3, -3, 0, 4.5F, 6.5F, 7.5F}},
    {"Dance", {7.14F, 13.1F, 9.98F, 0, 3.84F, 7.3F, 10.3F, 9.08F, 7.18F, 0}},
    {"Deep", {9.9F, 7.1F, 3.5F, 2, 5.7F, 5, 2.9F, -4.3F, -7.1F, -9.2F}},
    {"Electronic", {8.5F, 7.6F, 2.4F, 0, -4.3F, 4.5F, 1.7F, 2.5F, 7.9F, 9.6F}},
    {"Latin", {9, 6, 0, 0, -3, -3, -3, 0, 6, 9}},
    {"Loudness", {12, 8, 0, 0, -4, 0, -2, -10, 10, 2}},
    {"Lounge", {-6, -3, -1, 3, 8, 5, 0, -3, 4, 2}},
    {"Piano", {6, 4, 0, 5, 6, 3, 7, 9, 6, 7}},
    {"Small Speakers", {11, 8.5F, 7, 5, 2.5F, 0, -2.5F, -5, -7, -8.5F}},
    {"Spoken Word", {-6.92F, -0.94F, 0, 1.38F, 6.92F, 9.22F, 9.68F, 8.56F, 5.08F, 0}},
    {"Treble Booster", {0, 0, 0, 0, 0, 2.5F, 5, 7, 8.5F, 11}},
    {"Treble Reducer", {0, 0, 0, 0, 0, -2.5F, -5, -7, -8.5F, -11}},
    {"Vocal Booster", {-3, -6, -6, 3, 7.5F, 7.5F, 6, 3, 0, -3}},
    {"Clarity", {-6, -4, 2, -1, -1, 0, 2, 3, 1, 0}},
}};

} // namespace

std::vector<EQPreset> defaultPresets() {
    std::vector<EQPreset> presets;
    presets.reserve(kFactoryPresets.size());
    for (const auto& [name, bands] : kFactoryPresets) {
        presets.push_back({UUID::random(), name, 0, {bands.begin(), bands.end()}, true});
    }
    return presets;
}

} // namespace halvo
