#include "audio/BiquadCascade.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <vector>

using namespace halvo;

namespace {

/// The plain loop that the cascade must equal: frame by frame, section by section.
class PlainCascade {
  public:
    void process(std::vector<float>& frames, const BiquadCascade::Coefficients& coefficients) {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            for (std::size_t section = 0; section < kBandCount; ++section) {
                const auto& c = coefficients[section];
                auto& [z1, z2] = memory_[i % 2][section];
                const float x = frames[i];
                const float y = c.b0 * x + z1;
                z1 = c.b1 * x - c.a1 * y + z2;
                z2 = c.b2 * x - c.a2 * y;
                frames[i] = y;
            }
        }
    }

  private:
    struct Memory {
        float z1 = 0;
        float z2 = 0;
    };
    std::array<std::array<Memory, kBandCount>, 2> memory_{};
};

} // namespace

TEST(BiquadCascade, EqualsThePlainLoopToTheLastBitInAnyPieces) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> sample(-1, 1);
    std::uniform_real_distribution<float> gain(-20, 20);
    BiquadCascade cascade;
    PlainCascade plain;
    const std::size_t sizes[] = {0, 1, 2, 8, 9, 10, 11, 12, 19, 20, 63, 64, 128, 511, 512, 1024};
    for (int round = 0; round < 400; ++round) {
        BiquadCascade::Coefficients coefficients{};
        for (std::size_t band = 0; band < kBandCount; ++band) {
            if (random() % 4 == 0) continue; // an identity band
            coefficients[band] =
                BiquadCoefficients::peaking(gain(random), kBandFrequencies[band], 48000);
        }
        const std::size_t frames = sizes[random() % std::size(sizes)];
        std::vector<float> heard(frames * 2);
        const bool isSilent = round % 7 == 6; // leaves subnormal numbers behind
        for (auto& value : heard)
            value = isSilent ? 0.0F : sample(random);
        auto wanted = heard;
        cascade.process(heard.data(), static_cast<std::int64_t>(frames), coefficients);
        plain.process(wanted, coefficients);
        const bool isSame = std::ranges::equal(heard, wanted, [](float a, float b) {
            return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
        });
        ASSERT_TRUE(isSame) << "round " << round << ", " << frames << " frames";
    }
}
