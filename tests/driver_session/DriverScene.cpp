#include "driver_session/DriverScene.h"

#include "support/SessionPrograms.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>

namespace halvo::test {

using session::PrivateSession;

namespace {

namespace fs = std::filesystem;

constexpr float kStep = 0x1p-24F;
constexpr std::size_t kCycleFrames = 1024;
constexpr const char* kCaptureStream = "halvo-audio-device";

} // namespace

DriverScene::DriverScene(session::Options options) {
    auto created = PrivateSession::create(std::move(options));
    // Reported by the test framework as the test's failure.
    if (!created) throw std::runtime_error(created.error());
    session_ = std::move(*created);
    ring_ = std::make_unique<RingFollower>(session_->ringName());
}

void DriverScene::startDriver() {
    driver_.reset();
    (void)PrivateSession::waitFor([this] { return nodes(kCaptureStream) == 0; });
    auto started = session_->spawn({HALVO_AUDIO_DEVICE});
    if (!started) throw std::runtime_error(started.error());
    driver_ = std::move(*started);
}

void DriverScene::installDropIn() {
    const fs::path program = HALVO_AUDIO_DEVICE;
    const auto bundle = program.parent_path().parent_path().parent_path();
    test::installDropIn(session_->directory(), bundle.string());
}

std::vector<int> DriverScene::processes(const std::string& name) const {
    return processesOf(session_->directory(), name);
}

bool DriverScene::isUp() {
    return PrivateSession::waitFor([this] {
        return virtualSinks() == 1 && nodes(kCaptureStream) == 1 &&
               (ring_->isReady() || ring_->open());
    });
}

std::size_t DriverScene::virtualSinks() const {
    return nodes(kVirtualSink);
}

std::size_t DriverScene::nodes(const char* name) const {
    const auto names = session_->nodeNames();
    return static_cast<std::size_t>(std::ranges::count(names, name));
}

bool DriverScene::gatherUntil(const std::function<bool()>& condition) {
    return PrivateSession::waitFor(
        [&] {
            ring_->gather();
            return condition();
        },
        std::chrono::seconds(20));
}

bool DriverScene::soundArrives() {
    return gatherUntil([this] { return examineCounting(ring_->samples()).frames > 4096; });
}

std::vector<float> countingSamples(std::size_t frames) {
    std::vector<float> samples;
    samples.reserve(frames * 2);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const float value = static_cast<float>(frame + 1) * kStep;
        samples.insert(samples.end(), {value, -value});
    }
    return samples;
}

// PipeWire 1.4 starts the links of a new stream one by one: in about one of forty streams, a
// channel's link delivers the previous cycle for one cycle.
CountingResult examineCounting(const std::vector<float>& samples) {
    CountingResult result;
    float next = 0.0F; // the value that continues the stretch; 0: a new stretch may begin
    for (std::size_t index = 0; index + 1 < samples.size(); index += 2) {
        const float left = samples[index];
        const float right = -samples[index + 1];
        if (left == 0.0F && right == 0.0F) {
            next = 0.0F;
            continue;
        }
        const float number = left / kStep;
        const float apart = std::abs(left - right) / kStep;
        const bool isWhole = number == std::floor(number) && apart == std::floor(apart);
        const bool isFrame = isWhole && left == right;
        const bool isSkewed = isWhole && left > 0.0F && right > 0.0F && left != right &&
                              apart <= static_cast<float>(kCycleFrames) &&
                              result.skewed == result.frames && result.skewed < kCycleFrames;
        const bool goesOn = left == next;
        const bool startsLater = number > static_cast<float>(result.last);
        if (isSkewed) {
            ++result.skewed;
        } else if (!isFrame || (!goesOn && !startsLater)) {
            ++result.wrong;
        }
        if (isFrame && !goesOn && result.frames > 0) ++result.jumps;
        result.last = static_cast<std::size_t>(number);
        if (result.frames++ == 0) result.first = result.last;
        next = left + kStep;
    }
    return result;
}

} // namespace halvo::test
