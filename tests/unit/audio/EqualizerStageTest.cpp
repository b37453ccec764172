#include "audio/EqualizerStage.h"
#include "audio/SampleMath.h"
#include "bench/PlainCascade.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace halvo;

TEST(EqualizerStage, IsPreampThenBandsThenClipToTheLastBit) {
    const std::vector<float> gains{6, -3, 9, 0, 2, -7, 5, 1, 12, -12};
    EqualizerStage stage;
    stage.setPreamp(4.5F);
    stage.bands().setBands(gains);
    std::vector<float> heard(4000);
    for (std::size_t i = 0; i < heard.size(); ++i)
        heard[i] = std::sin(static_cast<float>(i) * 0.37F) * 0.6F;
    auto wanted = heard;
    stage.process({heard.data(), 2000, 2});

    scaleSamples(wanted, std::pow(10.0F, 4.5F / 20.0F));
    PlainCascade().process(wanted.data(), 2000, stage.bands().coefficients());
    EXPECT_GT(maximumMagnitude(wanted), 1.0F) << "something to clip";
    softClip(wanted);
    EXPECT_EQ(heard, wanted);
}
