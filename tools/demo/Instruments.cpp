#include "Instruments.h"

#include "StereoSound.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvo::demo {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;

/// White noise between -1 and 1, the same from the same seed (xorshift of 32 bits, Marsaglia).
class Noise {
  public:
    explicit Noise(std::uint32_t seed) : state_(seed * 2654435761U + 1) {}

    double next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return static_cast<double>(state_) / 2147483648.0 - 1.0;
    }

  private:
    std::uint32_t state_;
};

std::size_t frames(double seconds) {
    return static_cast<std::size_t>(seconds * kSampleRate);
}

double secondsAt(std::size_t frame) {
    return static_cast<double>(frame) / kSampleRate;
}

/// Falls from 1 to 0 over the last `release` seconds of a note.
double releaseAt(double time, double length, double release) {
    return std::clamp((length - time) / release, 0.0, 1.0);
}

} // namespace

Note pluckedString(double frequencyHz, double seconds, std::uint32_t seed) {
    // The averaging below delays by half a frame; the rest of the period is interpolated.
    const double period = kSampleRate / frequencyHz - 0.5;
    const auto whole = static_cast<std::size_t>(period);
    const double fraction = period - static_cast<double>(whole);
    const double loss = std::pow(0.001, 1 / (frequencyHz * 2.5));

    Noise noise(seed);
    std::vector<double> line(whole + 2);
    double soft = 0;
    double mean = 0;
    for (double& sample : line) {
        soft += 0.45 * (noise.next() - soft);
        sample = soft * 1.6;
        mean += sample / static_cast<double>(line.size());
    }
    // A constant part would circulate too, and the loudspeaker would stand off centre.
    for (double& sample : line)
        sample -= mean;
    Note note(frames(seconds));
    double previous = 0;
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const std::size_t size = line.size();
        const double near = line[(frame + size - whole) % size];
        const double far = line[(frame + size - whole - 1) % size];
        const double delayed = near + fraction * (far - near);
        const double sample = loss * 0.5 * (delayed + previous);
        previous = delayed;
        line[frame % size] = sample;
        note[frame] = static_cast<float>(sample * releaseAt(secondsAt(frame), seconds, 0.08));
    }
    return note;
}

Note bowedString(double frequencyHz, double seconds) {
    constexpr int kHarmonics = 9;
    Note note(frames(seconds));
    double phase = 0;
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const double time = secondsAt(frame);
        const double attack = 1 - std::exp(-time / 0.12);
        const double vibrato = 1 + 0.003 * std::min(time, 1.0) * std::sin(kTurn * 5.1 * time);
        phase += kTurn * frequencyHz * vibrato / kSampleRate;
        double sample = 0;
        for (int harmonic = 1; harmonic <= kHarmonics; ++harmonic)
            sample += std::sin(harmonic * phase) / (harmonic * std::sqrt(harmonic));
        note[frame] = static_cast<float>(0.6 * attack * sample * releaseAt(time, seconds, 0.3));
    }
    return note;
}

Note bassNote(double frequencyHz, double seconds) {
    constexpr int kHarmonics = 6;
    Note note(frames(seconds));
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const double time = secondsAt(frame);
        double sample = 0;
        for (int harmonic = 1; harmonic <= kHarmonics; ++harmonic)
            sample += std::sin(kTurn * frequencyHz * harmonic * time) *
                      std::exp(-time * (1.0 + 1.3 * harmonic)) / harmonic;
        const double attack = std::min(time / 0.006, 1.0);
        note[frame] = static_cast<float>(0.8 * attack * sample * releaseAt(time, seconds, 0.05));
    }
    return note;
}

Note kickDrum() {
    Note note(frames(0.32));
    double phase = 0;
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const double time = secondsAt(frame);
        phase += kTurn * (48 + 110 * std::exp(-time / 0.025)) / kSampleRate;
        note[frame] = static_cast<float>(std::sin(phase) * std::exp(-time / 0.09) *
                                         releaseAt(time, 0.32, 0.05));
    }
    return note;
}

Note brushedSnare(std::uint32_t seed) {
    Noise noise(seed);
    Note note(frames(0.28));
    double low = 0;
    double lower = 0;
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const double time = secondsAt(frame);
        low += 0.5 * (noise.next() - low);
        lower += 0.12 * (low - lower);
        const double swish = (low - lower) * std::min(time / 0.004, 1.0) * std::exp(-time / 0.07);
        const double skin = 0.4 * std::sin(kTurn * 190 * time) * std::exp(-time / 0.03);
        note[frame] = static_cast<float>((swish + skin) * releaseAt(time, 0.28, 0.05));
    }
    return note;
}

Note closedHat(std::uint32_t seed) {
    Noise noise(seed);
    Note note(frames(0.09));
    double previous = 0;
    for (std::size_t frame = 0; frame < note.size(); ++frame) {
        const double time = secondsAt(frame);
        const double sample = noise.next();
        note[frame] = static_cast<float>(0.5 * (sample - previous) * std::exp(-time / 0.018) *
                                         releaseAt(time, 0.09, 0.03));
        previous = sample;
    }
    return note;
}

} // namespace halvo::demo
