#include "application/Tone.h"

#include "session/PrivateSession.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvo::test {

std::vector<float> sine(double frequency, float amplitude, double seconds, std::uint32_t rate) {
    const auto frames = static_cast<std::size_t>(seconds * rate);
    std::vector<float> samples(frames * 2);
    for (std::size_t n = 0; n < frames; ++n) {
        const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(n) / rate;
        samples[2 * n] = samples[2 * n + 1] = amplitude * static_cast<float>(std::sin(phase));
    }
    return samples;
}

double levelDb(const std::vector<float>& interleaved, std::size_t firstFrame, std::size_t frames) {
    double sum = 0;
    const auto end = std::min(firstFrame + frames, interleaved.size() / 2);
    if (end <= firstFrame) return -200;
    for (auto frame = firstFrame; frame < end; ++frame) {
        const double sample = static_cast<double>(interleaved[2 * frame]);
        sum += sample * sample;
    }
    return 10 * std::log10(std::max(sum / static_cast<double>(end - firstFrame), 1e-20));
}

double loudestDb(const std::vector<float>& interleaved, std::size_t firstFrame,
                 std::uint32_t rate) {
    const std::size_t window = rate / 100;
    double loudest = -200;
    for (auto frame = firstFrame; frame + window <= interleaved.size() / 2; frame += window / 4) {
        loudest = std::max(loudest, levelDb(interleaved, frame, window));
    }
    return loudest;
}

bool settlesAt(session::Recorder& recorder, double level) {
    return session::PrivateSession::waitFor([&] {
        const auto sound = recorder.recording().samples;
        const std::size_t window = 9600;
        if (sound.size() / 2 < window) return false;
        return std::abs(levelDb(sound, sound.size() / 2 - window, window) - level) < 0.1;
    });
}

} // namespace halvo::test
