#include "DemoTrack.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

namespace halvo::demo {
namespace {

constexpr double kFullCircle = 2 * std::numbers::pi;

constexpr std::size_t frames(double seconds) {
    return static_cast<std::size_t>(seconds * kSampleRate);
}

/// Four chords that swell and fade, the channels a quarter of a period apart, and a soft tick on
/// each half beat.
StereoSound chords() {
    constexpr double kChordSeconds = 1.5;
    constexpr double kTickSeconds = kChordSeconds / 4;
    constexpr std::array<std::array<double, 4>, 4> kFrequencies{{{110.0, 261.6, 329.6, 493.9},
                                                                 {146.8, 261.6, 370.0, 493.9},
                                                                 {98.0, 246.9, 370.0, 440.0},
                                                                 {130.8, 246.9, 329.6, 392.0}}};
    constexpr double kLevel = 0.05; // four tones and a tick stay below a fifth of full scale
    StereoSound sound(frames(kChordSeconds * kFrequencies.size()));
    std::mt19937 random;
    for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
        const double time = static_cast<double>(frame) / kSampleRate;
        const double swell =
            std::sin(std::numbers::pi * std::fmod(time, kChordSeconds) / kChordSeconds);
        const double noise = static_cast<double>(random()) / 4294967296.0 - 0.5;
        const double tick = noise * std::exp(-std::fmod(time, kTickSeconds) / 0.02);
        double left = tick;
        double right = tick;
        for (const double frequency : kFrequencies[frame / frames(kChordSeconds)]) {
            left += swell * std::sin(kFullCircle * frequency * time);
            right += swell * std::cos(kFullCircle * frequency * time);
        }
        sound.samples[frame * 2] = static_cast<float>(kLevel * left);
        sound.samples[frame * 2 + 1] = static_cast<float>(kLevel * right);
    }
    return sound;
}

/// A tone whose pitch rises by the same interval in each second, and a quarter of a second of
/// silence.
StereoSound logarithmicSweep() {
    constexpr double kSeconds = 3.5;
    constexpr double kLowHz = 20;
    constexpr double kHighHz = 20000;
    constexpr double kFadeSeconds = 0.02;
    StereoSound sound(frames(kSeconds + 0.25));
    const double rise = std::log(kHighHz / kLowHz) / kSeconds;
    for (std::size_t frame = 0; frame < frames(kSeconds); ++frame) {
        const double time = static_cast<double>(frame + 1) / kSampleRate;
        const double phase = kFullCircle * kLowHz * (std::exp(rise * time) - 1) / rise;
        const double fade = std::clamp(std::min(time, kSeconds - time) / kFadeSeconds, 0.0, 1.0);
        const auto sample = static_cast<float>(DemoTrack::kSweepPeak * fade * std::sin(phase));
        sound.samples[frame * 2] = sound.samples[frame * 2 + 1] = sample;
    }
    return sound;
}

} // namespace

DemoTrack::DemoTrack() : music(chords()), sweep(logarithmicSweep()), sound(music) {
    sound.samples.insert(sound.samples.end(), sweep.samples.begin(), sweep.samples.end());
    sound.samples.resize(sound.samples.size() + 2 * frames(0.75));
}

} // namespace halvo::demo
