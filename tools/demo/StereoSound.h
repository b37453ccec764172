#pragma once

#include <cstddef>
#include <vector>

namespace halvo::demo {

constexpr int kSampleRate = 48000;

/// A piece of stereo sound at 48000 frames per second: left and right interleaved.
struct StereoSound {
    std::vector<float> samples;

    StereoSound() = default;
    explicit StereoSound(std::size_t frameCount) : samples(frameCount * 2) {}

    std::size_t frameCount() const { return samples.size() / 2; }
    float left(std::size_t frame) const { return samples[frame * 2]; }
    float right(std::size_t frame) const { return samples[frame * 2 + 1]; }
    float at(std::size_t frame, std::size_t channel) const { return samples[frame * 2 + channel]; }

    /// The largest magnitude of any sample; 0 for nothing.
    float peak() const;
    /// `length` frames from `first` on; frames before the beginning or after the end are silence.
    StereoSound stretch(std::ptrdiff_t first, std::size_t length) const;
};

/// How often `heard`, a filter's answer to `played`, falls silent for 32 frames or longer between
/// its first and its last sound; one more when it is shorter than `played`: its beginning or end is
/// missing. `played` has no such silence itself.
std::size_t countInterruptions(const StereoSound& played, const StereoSound& heard);

} // namespace halvo::demo
