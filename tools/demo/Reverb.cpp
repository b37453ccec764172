#include "Reverb.h"

#include <array>
#include <vector>

namespace halvo::demo {
namespace {

/// One of the four: a delay with a low-pass at its end.
class DelayLine {
  public:
    explicit DelayLine(std::size_t frames) : memory_(frames) {}

    double read() {
        damped_ += 0.55 * (memory_[place_] - damped_);
        return damped_;
    }
    void write(double sample) {
        memory_[place_] = sample;
        place_ = (place_ + 1) % memory_.size();
    }

  private:
    std::vector<double> memory_;
    std::size_t place_ = 0;
    double damped_ = 0;
};

} // namespace

StereoSound roomSound(const StereoSound& dry) {
    // Lengths without common divisors, 31 to 47 ms, so that the echoes do not pile up.
    std::array<DelayLine, 4> lines{DelayLine(1499), DelayLine(1747), DelayLine(2011),
                                   DelayLine(2273)};
    constexpr double kFeedback = 0.82;
    StereoSound room(dry.frameCount());
    for (std::size_t frame = 0; frame < dry.frameCount(); ++frame) {
        std::array<double, 4> out{};
        for (std::size_t line = 0; line < out.size(); ++line)
            out[line] = lines[line].read();
        const double evenSum = out[0] + out[1];
        const double evenDifference = out[0] - out[1];
        const double oddSum = out[2] + out[3];
        const double oddDifference = out[2] - out[3];
        const double left = static_cast<double>(dry.left(frame));
        const double right = static_cast<double>(dry.right(frame));
        lines[0].write(left + kFeedback * 0.5 * (evenSum + oddSum));
        lines[1].write(right + kFeedback * 0.5 * (evenDifference + oddDifference));
        lines[2].write(left + kFeedback * 0.5 * (evenSum - oddSum));
        lines[3].write(right + kFeedback * 0.5 * (evenDifference - oddDifference));
        room.samples[frame * 2] = static_cast<float>(0.5 * (out[0] + out[2]));
        room.samples[frame * 2 + 1] = static_cast<float>(0.5 * (out[1] + out[3]));
    }
    return room;
}

} // namespace halvo::demo
