#pragma once

#include "demo/ExpectedResponse.h"
#include "demo/StereoSound.h"

#include <array>

namespace halvo::demo {

/// A sound as the ten filters of `response` leave it, in double precision.
inline StereoSound filtered(const ExpectedResponse& response, const StereoSound& sound) {
    StereoSound result(sound.frameCount());
    for (std::size_t channel = 0; channel < 2; ++channel) {
        std::array<std::array<double, 2>, 10> state{};
        for (std::size_t frame = 0; frame < sound.frameCount(); ++frame) {
            auto sample = static_cast<double>(sound.at(frame, channel));
            for (std::size_t band = 0; band < state.size(); ++band) {
                const PeakingFilter& filter = response.filters()[band];
                const double output = filter.b0 * sample + state[band][0];
                state[band][0] = filter.b1 * sample - filter.a1 * output + state[band][1];
                state[band][1] = filter.b2 * sample - filter.a2 * output;
                sample = output;
            }
            result.samples[frame * 2 + channel] = static_cast<float>(sample);
        }
    }
    return result;
}

} // namespace halvo::demo
