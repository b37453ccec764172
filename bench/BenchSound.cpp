#include "BenchSound.h"

#include "presets/FactoryPresets.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>

namespace halvo::bench {

using demo::kSampleRate;
using demo::StereoSound;

namespace {

constexpr float kPeak = 0.1F;

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, Close>;

/// White noise through three low-passes that together fall by 3 dB an octave.
class PinkNoise {
  public:
    explicit PinkNoise(std::uint32_t seed) : random_(seed) {}

    float next() {
        const float white = static_cast<float>(random_()) / 4294967296.0F - 0.5F;
        constexpr std::array<float, 3> kPoles{0.99765F, 0.963F, 0.57F};
        constexpr std::array<float, 3> kWeights{0.099F, 0.297F, 1.053F};
        float sum = 0.185F * white;
        for (std::size_t i = 0; i < levels_.size(); ++i) {
            levels_[i] = kPoles[i] * levels_[i] + kWeights[i] * white;
            sum += levels_[i];
        }
        return sum;
    }

  private:
    std::mt19937 random_;
    std::array<float, 3> levels_{};
};

float tones(std::size_t frame) {
    constexpr std::array<double, 4> kFrequencies{55, 440, 2500, 9000};
    double sum = 0;
    for (const double frequency : kFrequencies)
        sum += 0.2 * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(frame) /
                              kSampleRate);
    return static_cast<float>(sum);
}

} // namespace

std::array<float, 10> presetGains() {
    std::array<float, 10> gains{};
    const auto presets = defaultPresets();
    const auto preset = std::ranges::find(presets, kPreset, &EQPreset::name);
    if (preset != presets.end()) std::ranges::copy(preset->bands, gains.begin());
    return gains;
}

StereoSound stretch(double seconds) {
    StereoSound sound(static_cast<std::size_t>(std::min(seconds, kStretchSeconds) * kSampleRate));
    PinkNoise left(1);
    PinkNoise right(2);
    for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
        sound.samples[frame * 2] = tones(frame) + left.next();
        sound.samples[frame * 2 + 1] = tones(frame) + right.next();
    }
    const float scale = kPeak / sound.peak();
    for (float& sample : sound.samples)
        sample *= scale;
    return sound;
}

std::optional<std::string> writeLongFile(const std::string& path) {
    SF_INFO format{};
    format.samplerate = kSampleRate;
    format.channels = 2;
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    const SoundFile file(sf_open(path.c_str(), SFM_WRITE, &format));
    if (!file) return "cannot write " + path + ": " + sf_strerror(nullptr);
    const StereoSound sound = stretch(kStretchSeconds);
    const auto count = static_cast<sf_count_t>(sound.frameCount());
    for (double written = 0; written < kFileMinutes * 60; written += kStretchSeconds)
        if (sf_writef_float(file.get(), sound.samples.data(), count) != count)
            return "cannot write " + path + ": the disk may be full";
    return std::nullopt;
}

std::expected<StereoSound, std::string> readSoundFile(const std::string& path) {
    SF_INFO format{};
    const SoundFile file(sf_open(path.c_str(), SFM_READ, &format));
    if (!file || format.channels != 2 || format.samplerate != kSampleRate)
        return std::unexpected(path + " is no stereo sound of 48000 frames per second");
    StereoSound sound(static_cast<std::size_t>(format.frames));
    const auto read = sf_readf_float(file.get(), sound.samples.data(), format.frames);
    sound.samples.resize(static_cast<std::size_t>(read) * 2);
    return sound;
}

} // namespace halvo::bench
