#include "linux/pipewire/PipeWireRenderer.h"
#include "linux_audio/TestSignal.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace halvo {
namespace {

constexpr StreamFormat kStereo{48000, 2};

OSStatus renderOnes(void*, std::uint32_t*, const RenderTimestamp*, std::uint32_t, std::uint32_t,
                    RenderBufferList* list) noexcept HALVO_REALTIME {
    for (std::uint32_t i = 0; i < list->buffers[0].byteSize / sizeof(float); ++i)
        list->buffers[0].data[i] = 1;
    return kNoErr;
}

/// The left samples of that many frames, in blocks whose length does not divide the ramp's.
std::vector<float> render(PipeWireRenderer& renderer, std::size_t frames) {
    std::vector<float> result;
    while (result.size() < frames) {
        std::vector<float> block(2 * 100, -5);
        renderer.render(block.data(), 100);
        for (std::size_t i = 0; i < 200; i += 2) {
            EXPECT_EQ(block[i], block[i + 1]) << "both channels alike";
            result.push_back(block[i]);
        }
    }
    return result;
}

TEST(RendererTest, LeavesSamplesUntouchedWhileTheGateIsOpen) {
    OutputGate gate;
    PipeWireRenderer renderer(gate);
    TestSignal signal;
    renderer.prepare(kStereo, TestSignal::render, &signal);
    std::vector<float> block(2 * 1024);
    renderer.render(block.data(), 1024);
    for (std::uint32_t i = 0; i < 1024; ++i) {
        ASSERT_EQ(block[2 * i], TestSignal::left(i + 1));
        ASSERT_EQ(block[2 * i + 1], TestSignal::right(i + 1));
    }
    EXPECT_EQ(renderer.framesPlayed(), 1024U);
}

TEST(RendererTest, FadesOutWithin5MillisecondsAndInOver30) {
    OutputGate gate;
    PipeWireRenderer renderer(gate);
    renderer.prepare(kStereo, renderOnes, nullptr);
    (void)render(renderer, 100);
    gate.close();
    const auto out = render(renderer, 300);
    const std::size_t silentFrom = 240;
    for (std::size_t i = 1; i < 240; ++i)
        ASSERT_LT(out[i], out[i - 1]);
    EXPECT_GT(out[0], 0.99F) << "no click";
    for (std::size_t i = silentFrom; i < out.size(); ++i)
        ASSERT_EQ(out[i], 0.0F);
    gate.open();
    const auto in = render(renderer, 1500);
    EXPECT_LT(in[0], 0.001F) << "no click";
    for (std::size_t i = 1; i < 1439; ++i)
        ASSERT_GT(in[i], in[i - 1]);
    EXPECT_NEAR(in[720], 0.5F, 0.01F);
    EXPECT_LT(in[1430], 1.0F);
    for (std::size_t i = 1441; i < in.size(); ++i)
        ASSERT_EQ(in[i], 1.0F);

    gate.close();
    renderer.prepare(kStereo, renderOnes, nullptr);
    EXPECT_EQ(render(renderer, 100), std::vector<float>(100)) << "closed from the start";
}

OSStatus renderNotFinite(void* refCon, std::uint32_t*, const RenderTimestamp*, std::uint32_t,
                         std::uint32_t frames, RenderBufferList* list) noexcept HALVO_REALTIME {
    const auto& values = *static_cast<const std::vector<float>*>(refCon);
    for (std::uint32_t i = 0; i < frames * 2; ++i)
        list->buffers[0].data[i] = values[i % values.size()];
    return kNoErr;
}

TEST(RendererTest, ReplacesWhatIsNotFinite) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kLargest = std::numeric_limits<float>::max();
    std::vector<float> values{0.5F,      std::nanf(""), kInfinity, -1,    -kInfinity,
                              -kLargest, kLargest,      1e-42F,    -0.0F, -std::nanf("")};
    OutputGate gate;
    PipeWireRenderer renderer(gate);
    renderer.prepare(kStereo, renderNotFinite, &values);
    std::vector<float> block(20);
    renderer.render(block.data(), 10);
    for (std::size_t i = 0; i < block.size(); ++i) {
        const float value = values[i % values.size()];
        EXPECT_EQ(block[i], std::isfinite(value) ? value : 0.0F) << i;
    }
}

OSStatus renderNothing(void*, std::uint32_t*, const RenderTimestamp*, std::uint32_t, std::uint32_t,
                       RenderBufferList*) noexcept HALVO_REALTIME {
    return -1;
}

TEST(RendererTest, IsSilentWhereTheCallbackWritesNothing) {
    OutputGate gate;
    PipeWireRenderer renderer(gate);
    renderer.prepare(kStereo, renderNothing, nullptr);
    EXPECT_EQ(render(renderer, 100), std::vector<float>(100)) << "never what was there before";
}

TEST(RendererTest, CountsCyclesThatDoNotFollow) {
    struct Step {
        const char* name;
        std::uint32_t clock;
        std::uint64_t position;
        std::uint64_t underruns;
    };
    const Step steps[] = {
        {"first", 1, 5000, 0},      {"next", 1, 6024, 0},       {"same cycle", 1, 6024, 0},
        {"next again", 1, 7048, 0}, {"one missed", 1, 9096, 1}, {"next", 1, 10120, 1},
        {"other clock", 2, 77, 1},  {"its next", 2, 1101, 1},   {"many missed", 2, 99999, 2},
    };
    OutputGate gate;
    PipeWireRenderer renderer(gate);
    renderer.prepare(kStereo, renderOnes, nullptr);
    for (const auto& step : steps) {
        renderer.clock(step.clock, step.position, 1024);
        EXPECT_EQ(renderer.underruns(), step.underruns) << step.name;
    }
}

} // namespace
} // namespace halvo
