#include "DemoTrack.h"

#include "Instruments.h"
#include "Reverb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace halvo::demo {
namespace {

constexpr double kBeatSeconds = 0.75;
constexpr double kMusicSeconds = 6.0;
constexpr double kPauseSeconds = 0.1;
constexpr double kSweepSeconds = 3.5;
constexpr double kRingingSeconds = 0.25;
constexpr double kSilenceSeconds = 1.0;
constexpr float kMusicPeak = 0.2F;

std::size_t frames(double seconds) {
    return static_cast<std::size_t>(seconds * kSampleRate);
}

/// The pitch of a key of the keyboard, 69 = A4 = 440 Hz.
double pitch(int key) {
    return 440 * std::pow(2.0, (key - 69) / 12.0);
}

/// Two beats of harmony.
struct Chord {
    int bass;
    std::array<int, 4> keys;
};
constexpr std::array<Chord, 4> kChords{{
    {45, {60, 64, 67, 71}}, // A minor 9
    {50, {60, 64, 66, 71}}, // D 13
    {43, {59, 62, 66, 69}}, // G major 9
    {48, {59, 62, 64, 67}}, // C major 9
}};

/// Adds notes to a stereo sound; `pan` from 0 (left) to 1 (right).
void add(StereoSound& mix, const Note& note, double atSeconds, double level, double pan) {
    const std::size_t start = frames(atSeconds);
    const auto left = static_cast<float>(level * std::cos(pan * std::numbers::pi / 2));
    const auto right = static_cast<float>(level * std::sin(pan * std::numbers::pi / 2));
    const std::size_t end = std::min(start + note.size(), mix.frameCount());
    for (std::size_t frame = start; frame < end; ++frame) {
        mix.samples[frame * 2] += left * note[frame - start];
        mix.samples[frame * 2 + 1] += right * note[frame - start];
    }
}

void addHarmony(StereoSound& mix) {
    constexpr std::array<std::size_t, 4> kPattern{0, 2, 3, 1};
    std::uint32_t seed = 1;
    for (std::size_t bar = 0; bar < kChords.size(); ++bar) {
        const Chord& chord = kChords[bar];
        const double start = static_cast<double>(bar) * 2 * kBeatSeconds;
        for (std::size_t voice = 0; voice < chord.keys.size(); ++voice) {
            const double pan = 0.2 + 0.2 * static_cast<double>(voice);
            add(mix, bowedString(pitch(chord.keys[voice]), 2 * kBeatSeconds + 0.2), start, 0.13,
                pan);
        }
        for (std::size_t step = 0; step < 8; ++step) {
            const int octave = step >= 4 ? 12 : 0;
            const int key = chord.keys[kPattern[step % 4]] + octave;
            const double time = start + static_cast<double>(step) * kBeatSeconds / 4;
            add(mix, pluckedString(pitch(key), 1.2, seed++), time, 0.5, step % 2 == 0 ? 0.3 : 0.7);
        }
    }
}

void addRhythm(StereoSound& mix) {
    for (std::size_t bar = 0; bar < kChords.size(); ++bar) {
        const double start = static_cast<double>(bar) * 2 * kBeatSeconds;
        const int root = kChords[bar].bass;
        add(mix, bassNote(pitch(root), 0.9 * kBeatSeconds), start, 0.3, 0.5);
        add(mix, bassNote(pitch(root), 0.4 * kBeatSeconds), start + kBeatSeconds, 0.22, 0.5);
        add(mix, bassNote(pitch(root + 7), 0.45 * kBeatSeconds), start + 1.5 * kBeatSeconds, 0.24,
            0.5);
        add(mix, kickDrum(), start, 0.3, 0.5);
        add(mix, kickDrum(), start + 0.75 * kBeatSeconds, 0.2, 0.5);
        const auto seed = static_cast<std::uint32_t>(100 + 10 * bar);
        add(mix, brushedSnare(seed), start + kBeatSeconds, 0.32, 0.55);
        for (std::uint32_t step = 0; step < 4; ++step)
            add(mix, closedHat(seed + 1 + step), start + step * kBeatSeconds / 2,
                step % 2 == 0 ? 0.1 : 0.16, 0.65);
    }
}

StereoSound composeMusic() {
    StereoSound music(frames(kMusicSeconds));
    addHarmony(music);
    addRhythm(music);
    const StereoSound room = roomSound(music);
    const double fadeStart = kMusicSeconds - 0.5;
    for (std::size_t frame = 0; frame < music.frameCount(); ++frame) {
        const double time = static_cast<double>(frame) / kSampleRate;
        const double fade = time < fadeStart
                                ? 1.0
                                : 0.5 + 0.5 * std::cos((time - fadeStart) / 0.5 * std::numbers::pi);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            float& sample = music.samples[frame * 2 + channel];
            sample = static_cast<float>(fade) * (sample + 0.22F * room.at(frame, channel));
        }
    }
    const float scale = kMusicPeak / music.peak();
    for (float& sample : music.samples)
        sample *= scale;
    return music;
}

/// The phase of a sweep whose pitch rises by the same interval in each second.
void addSweep(StereoSound& sound, std::size_t begin) {
    constexpr double kLowHz = 20;
    constexpr double kHighHz = 20000;
    constexpr double kFadeSeconds = 0.02;
    const double rise = std::log(kHighHz / kLowHz) / kSweepSeconds;
    for (std::size_t frame = 0; frame < frames(kSweepSeconds); ++frame) {
        const double time = static_cast<double>(frame + 1) / kSampleRate;
        const double phase = 2 * std::numbers::pi * kLowHz * (std::exp(rise * time) - 1) / rise;
        const double fade =
            std::clamp(std::min(time, kSweepSeconds - time) / kFadeSeconds, 0.0, 1.0);
        const auto sample = static_cast<float>(DemoTrack::kSweepPeak * fade * std::sin(phase));
        sound.samples[(begin + frame) * 2] = sample;
        sound.samples[(begin + frame) * 2 + 1] = sample;
    }
}

} // namespace

DemoTrack::DemoTrack()
    : sound_(composeMusic()), sweepBegin_(frames(kMusicSeconds + kPauseSeconds)) {
    sound_.samples.resize(2 * (sweepBegin_ + frames(kSweepSeconds + kSilenceSeconds)));
    addSweep(sound_, sweepBegin_);
}

StereoSound DemoTrack::sweep() const {
    return sound_.stretch(static_cast<std::ptrdiff_t>(sweepBegin_),
                          frames(kSweepSeconds + kRingingSeconds));
}

} // namespace halvo::demo
