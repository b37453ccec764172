#include "audio/AudioEngine.h"
#include "platform/fake/FakePlatform.h"

#include <array>
#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace halvo::test {

namespace {

constexpr std::uint32_t kCapacity = 4096;
constexpr std::uint32_t kCycleFrames = 256;
constexpr int kCycles = 2000;

EQPreset preset(float preamp) {
    EQPreset result;
    result.name = "A name too long to be kept inside the string itself";
    result.preamp = preamp;
    return result;
}

/// The driver: writes whenever there is room, so that it never runs over what is being read.
void writeUntil(FakeSharedMemory& memory, const std::atomic<bool>& done) {
    const std::vector<float> frames(std::size_t{kCycleFrames} * 2, 0.5F);
    auto& header = memory.header();
    while (!done.load(std::memory_order_relaxed)) {
        const auto ahead = loadShared(header.writeIndex) - loadShared(header.readIndex);
        if (ahead + kCycleFrames <= kCapacity) memory.write(frames);
        std::this_thread::yield();
    }
}

} // namespace

// Says little without ThreadSanitizer, under which any unguarded word ends it.
TEST(ParameterRace, MainThreadMayChangeEverythingWhileSoundIsRendered) {
    FakePlatform platform;
    AudioEngine engine(platform.sharedMemory, platform.outputUnits, platform.mainQueue, platform.standardOutput,
                       [](const std::string&) { return std::optional<AudioDeviceID>(); });
    platform.sharedMemory.createRing(48000, 2, kCapacity);
    engine.start("");

    std::atomic<bool> done{false};
    float loudest = 0;
    bool finite = true;
    std::thread driver([&] { writeUntil(platform.sharedMemory, done); });
    std::thread renderThread([&] {
        std::vector<float> samples(std::size_t{kCycleFrames} * 2);
        RenderBuffer buffer{2, kCycleFrames * 8, samples.data()};
        RenderBufferList list{1, &buffer};
        for (int cycle = 0; cycle < kCycles; ++cycle) {
            std::uint32_t flags = 0;
            const RenderTimestamp timestamp;
            renderCallback(&engine, &flags, &timestamp, 0, kCycleFrames, &list);
            for (const float sample : samples) {
                finite = finite && std::isfinite(sample);
                loudest = std::max(loudest, std::fabs(sample));
            }
            std::this_thread::yield();
        }
        done.store(true, std::memory_order_relaxed);
    });

    // The bands stay small: every set on its own keeps this signal far below the clip.
    for (int change = 0; !done.load(std::memory_order_relaxed); ++change) {
        const float sign = change % 2 == 0 ? 1.0F : -1.0F;
        std::array<float, 10> gains{};
        gains.fill(sign);
        engine.eq().setBands(gains);
        engine.setCurrentPreset(preset(sign));
        engine.setOutputVolume(change % 3 == 0 ? 1.0F : 0.5F);
        engine.setEQEnabled(change % 5 != 0);
        (void)engine.ringBuffer().format();
        (void)engine.isRingCurrent();
        std::this_thread::yield();
    }
    renderThread.join();
    driver.join();
    EXPECT_TRUE(finite);
    EXPECT_GT(loudest, 0.1F);
    EXPECT_LT(loudest, 2.0F);
}

} // namespace halvo::test
