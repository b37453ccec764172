#include "audio/SampleMath.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <string>
#include <vector>

using namespace halvo;

namespace {

/// The clip's definition, one sample at a time.
float bent(float x) {
    if (x > 1) return 1 - 1 / (x + 1);
    if (x < -1) return 1 / (1 - x) - 1;
    return x;
}

} // namespace

/// Samples are processed in vectors and the remainder one by one: tests each position of each
/// length.
TEST(SampleMath, EverySampleCountsWhateverTheLength) {
    for (std::int64_t length = 0; length <= 40; ++length) {
        for (std::int64_t place = 0; place < length; ++place) {
            const std::string here = std::to_string(place) + " of " + std::to_string(length);
            std::vector<float> samples(static_cast<std::size_t>(length), 0.25F);
            const float special = place % 2 == 0 ? 3.5F : -3.5F;
            samples[static_cast<std::size_t>(place)] = special;
            const auto rest = static_cast<float>(length - 1);
            EXPECT_EQ(maximumMagnitude(samples), 3.5F) << here;
            EXPECT_EQ(sum(samples), special + rest * 0.25F) << here;
            EXPECT_FLOAT_EQ(rootMeanSquare(samples),
                            std::sqrt((12.25F + rest * 0.0625F) / static_cast<float>(length)))
                << here;
            softClip(samples);
            EXPECT_EQ(samples[static_cast<std::size_t>(place)], bent(special)) << here;
            EXPECT_EQ(maximumMagnitude(samples), std::fabs(bent(special))) << here;
        }
    }
    EXPECT_EQ(maximumMagnitude({}), 0);
    EXPECT_EQ(rootMeanSquare({}), 0);
}

TEST(SampleMath, TheClipIsItsDefinitionToTheLastBit) {
    std::vector<float> samples;
    for (std::uint64_t bits = 0; bits < std::uint64_t{1} << 32; bits += 40'961) // prime
        samples.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    const auto before = samples;
    softClip(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(samples[i]),
                  std::bit_cast<std::uint32_t>(bent(before[i])))
            << before[i];
    }
}
