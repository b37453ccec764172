#include "bench/PlainCascade.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace halvo;

namespace {

using Form = BiquadCascade::Form;

/// Equal to the last bit; which of two NaNs an operation hands on is not defined.
bool isSame(const std::vector<float>& heard, const std::vector<float>& wanted) {
    return std::ranges::equal(heard, wanted, [](float a, float b) {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
               (std::isnan(a) && std::isnan(b));
    });
}

/// Blocks of many lengths: the difficult cases are at the edges.
class Blocks {
  public:
    std::vector<float> next(std::size_t frames) {
        std::vector<float> block(frames * 2);
        const auto kind = random_() % 8;
        for (auto& value : block)
            value = kind < 2 ? 0.0F : sample_(random_); // silence leaves subnormal numbers behind
        if (kind == 7 && frames > 0) {
            const float broken[] = {std::nanf(""), std::numeric_limits<float>::infinity(), -0.0F};
            block[random_() % block.size()] = broken[random_() % std::size(broken)];
        }
        return block;
    }
    BiquadCascade::Coefficients nextCoefficients() {
        BiquadCascade::Coefficients coefficients{};
        for (std::size_t band = 0; band < kBandCount; ++band) {
            if (random_() % 4 == 0) continue; // an identity band
            coefficients[band] =
                BiquadCoefficients::peaking(gain_(random_), kBandFrequencies[band], 48000);
        }
        return coefficients;
    }
    std::size_t nextSize(int round) {
        return round < 205 ? static_cast<std::size_t>(round % 41) : random_() % 1025;
    }

  private:
    std::mt19937 random_{5};
    std::uniform_real_distribution<float> sample_{-1, 1};
    std::uniform_real_distribution<float> gain_{-20, 20};
};

class BiquadCascadeForms : public testing::TestWithParam<Form> {};

} // namespace

TEST_P(BiquadCascadeForms, EqualThePlainLoopToTheLastBitInAnyPieces) {
    if (!BiquadCascade::canRun(GetParam())) GTEST_SKIP() << "not on this processor";
    BiquadCascade cascade(GetParam());
    PlainCascade plain;
    Blocks blocks;
    int subnormal = 0;
    for (int round = 0; round < 500; ++round) {
        const auto coefficients = blocks.nextCoefficients();
        const std::size_t frames = blocks.nextSize(round);
        auto heard = blocks.next(frames);
        if (round % 100 == 99) heard.assign(200'000, 0.0F); // long enough to fade to nothing
        auto wanted = heard;
        cascade.process({heard.data(), static_cast<std::int64_t>(heard.size() / 2), 2},
                        coefficients);
        plain.process(wanted.data(), static_cast<std::int64_t>(wanted.size() / 2), coefficients);
        ASSERT_TRUE(isSame(heard, wanted)) << "round " << round << ", " << frames << " frames";
        subnormal += std::ranges::any_of(
            wanted, [](float value) { return std::fpclassify(value) == FP_SUBNORMAL; });
    }
    EXPECT_GT(subnormal, 0) << "or the comparison has left out the smallest numbers";
}

INSTANTIATE_TEST_SUITE_P(All, BiquadCascadeForms,
                         testing::Values(Form::FourLanes, Form::EightLanes), [](const auto& form) {
                             return form.param == Form::FourLanes ? "FourLanes" : "EightLanes";
                         });
