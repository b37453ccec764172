#include "application/ApplicationScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <map>

using namespace halvo::test;
using halvo::session::Options;
using halvo::session::PrivateSession;
using halvo::session::Recorder;
using halvo::session::Recording;

namespace {

constexpr std::size_t kPeriod = 12000; // frames from impulse to impulse

/// Impulses, each in a quarter of a second of silence; an impulse's height is its number.
std::vector<float> impulses(std::size_t count) {
    std::vector<float> samples(count * kPeriod * 2);
    for (std::size_t n = 0; n < count; ++n) {
        const std::size_t frame = n * kPeriod + kPeriod / 2;
        samples[2 * frame] = samples[2 * frame + 1] = static_cast<float>(n + 1) / 1024;
    }
    return samples;
}

/// The position of each impulse on the server's clock, by its number.
std::map<int, std::int64_t> places(const Recording& recording) {
    std::map<int, std::int64_t> result;
    for (const auto& block : recording.blocks) {
        for (std::size_t i = 0; i < block.frames; ++i) {
            const float sample = recording.samples[2 * (block.firstFrame + i)];
            if (sample == 0.0F) continue;
            result[static_cast<int>(std::lround(sample * 1024))] =
                static_cast<std::int64_t>(block.position + i);
        }
    }
    return result;
}

/// How much later each impulse reaches `device` than the virtual device's own monitor, which any
/// program hears in the cycle in which the client plays; in frames, the latest last.
std::vector<std::int64_t> addedFrames(const Recorder& direct, const Recorder& heard) {
    const auto sent = places(direct.recording());
    std::vector<std::int64_t> result;
    for (const auto& [number, place] : places(heard.recording())) {
        if (const auto at = sent.find(number); at != sent.end()) {
            result.push_back(place - at->second);
        }
    }
    return result;
}

/// Whether nothing is added, for three impulses in a row: a cycle that a busy machine misses may
/// cost one until the next silence.
void expectNothingAdded(ApplicationScene& scene, const char* device, const char* when) {
    const auto direct = scene.record(kVirtualSink);
    const auto heard = scene.record(device);
    std::vector<std::int64_t> added;
    EXPECT_TRUE(PrivateSession::waitFor([&] {
        added = addedFrames(*direct, *heard);
        return added.size() >= 3 && std::ranges::count(added.end() - 3, added.end(), 0) == 3;
    })) << when
        << ": " << testing::PrintToString(added);
}

} // namespace

class Latency : public testing::TestWithParam<std::uint32_t> {};

TEST_P(Latency, NothingIsAddedWhateverComesAndGoes) {
    Options options;
    options.quantum = GetParam();
    ApplicationScene scene(options);
    scene.writePresets(std::vector<float>(10, 0.0F));
    scene.startBoth();
    const auto player = scene.play(impulses(1000));
    expectNothingAdded(scene, kSpeakers, "after the start");
    ASSERT_TRUE(scene.driver().signal(SIGKILL));
    scene.startDriver();
    expectNothingAdded(scene, kSpeakers, "with another driver");
    ASSERT_TRUE(scene.session().setDefault(kHeadphones));
    ASSERT_TRUE(
        PrivateSession::waitFor([&] { return scene.session().defaultSink() == kVirtualSink; }));
    expectNothingAdded(scene, kHeadphones, "on another device");
}

INSTANTIATE_TEST_SUITE_P(Quantum, Latency, testing::Values(1024U, 256U));
