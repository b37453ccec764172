#include "audio/AudioEngine.h"
#include "fake/FakePlatform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace halvo;

/// For ThreadSanitizer: the main thread changes everything that it may change while a render
/// thread plays. Without it the test still proves that no coefficient set is seen in parts.
TEST(Threads, EveryParameterChangesUnderARunningRenderThread) {
    FakePlatform fake;
    fake.audioHardware.add("acc.a", "Speakers");
    fake.sharedMemory.createRing(48000, 2, 8192);
    AudioEngine engine(
        fake.sharedMemory, fake.outputUnits, fake.mainQueue, fake.standardOutput,
        [&](const std::string& uid) { return fake.audioHardware.deviceForUID(uid); });
    engine.start("acc.a");
    auto* unit = fake.outputUnits.current;

    std::atomic<bool> done{false};
    std::thread renderer([&] {
        while (!done.load()) {
            fake.sharedMemory.write(std::vector<float>(512, 0.25F));
            for (const float sample : unit->render(256))
                ASSERT_LE(std::abs(sample), 1.0F);
        }
    });
    EQPreset preset{UUID::random(), "Test", 0, std::vector<float>(10), false};
    for (int round = 0; round < 3000; ++round) {
        preset.preamp = static_cast<float>(round % 7) - 3;
        preset.bands.assign(10, static_cast<float>(round % 25) - 12);
        engine.setCurrentPreset(preset);
        engine.eq().setBands(preset.bands);
        engine.setOutputVolume(static_cast<float>(round % 100) / 100);
        engine.setEQEnabled(round % 3 != 0);
        (void)engine.isRingCurrent();
    }
    done.store(true);
    renderer.join();
}

TEST(Threads, ATripleBufferIsNeverSeenInParts) {
    struct Pair {
        std::array<std::uint64_t, 16> words{};
    };
    TripleBuffer<Pair> buffer{Pair{}};
    std::atomic<bool> done{false};
    std::thread reader([&] {
        std::uint64_t last = 0;
        while (!done.load()) {
            const auto value = buffer.read();
            for (const auto word : value.words)
                ASSERT_EQ(word, value.words[0]);
            ASSERT_GE(value.words[0], last);
            last = value.words[0];
        }
    });
    Pair pair;
    for (std::uint64_t n = 1; n < 200'000; ++n) {
        pair.words.fill(n);
        buffer.write(pair);
    }
    done.store(true);
    reader.join();
    EXPECT_EQ(buffer.read().words[0], 199'999U);
}
