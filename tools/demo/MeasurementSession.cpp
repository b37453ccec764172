#include "MeasurementSession.h"

#include "SoundFile.h"

#include <algorithm>

namespace halvo::demo {
namespace {

using session::PrivateSession;
using session::SpawnedProgram;
using std::chrono_literals::operator""ms;

} // namespace

std::expected<std::unique_ptr<MeasurementSession>, std::string>
MeasurementSession::open(Programs programs) {
    auto session = PrivateSession::create();
    if (!session)
        return std::unexpected("The private sound session cannot start: " + session.error());
    std::unique_ptr<MeasurementSession> result(
        new MeasurementSession(std::move(programs), std::move(*session)));
    if (auto started = result->startDriver(); !started) return std::unexpected(started.error());
    return result;
}

std::expected<void, std::string> MeasurementSession::startDriver() {
    auto driver = session_->spawn({programs_.driver});
    if (!driver) return std::unexpected("The driver cannot start: " + driver.error());
    driver_ = std::move(*driver);
    const auto hasAppeared = [this] {
        return std::ranges::count(session_->nodeNames(), kVirtualOutput) > 0;
    };
    const auto isSettled = [&] { return hasAppeared() || !driver_->isRunning(); };
    if (PrivateSession::waitFor(isSettled) && hasAppeared()) return {};
    const std::string what = driver_->isRunning() ? "The driver runs but shows no virtual output. "
                                                  : "The driver ended by itself. ";
    return std::unexpected(what + driver_->standardOutput() + driver_->standardError());
}

std::expected<std::string, std::string> MeasurementSession::prepare(const std::string& name,
                                                                    const StereoSound& sound) {
    // The player ends before its last cycle has gone through: that one has to be silence.
    constexpr std::size_t kLastCycles = 4096;
    const std::string path = temporaryFolder() + "/" + name;
    if (const auto failure =
            writeSoundFile(path, sound.stretch(0, sound.frameCount() + kLastCycles)))
        return std::unexpected(*failure);
    return path;
}

std::expected<void, std::string>
MeasurementSession::play(const std::string& path, const std::function<void()>& whilePlaying) {
    constexpr int kMostRounds = 600;
    const auto player = session_->spawn({"pw-play", path});
    if (!player) return std::unexpected("pw-play cannot start: " + player.error());
    std::optional<int> status;
    for (int round = 0; round < kMostRounds && !status; ++round) {
        whilePlaying();
        status = (*player)->wait(50ms);
    }
    if (status == 0) return {};
    return std::unexpected("pw-play failed (status " + std::to_string(status.value_or(-1)) +
                           "): " + (*player)->standardOutput() + (*player)->standardError());
}

std::expected<std::unique_ptr<SpawnedProgram>, std::string>
MeasurementSession::startPlayingIntoVirtualOutput(const std::string& path) {
    return session_->spawn({"pw-play", "--target", kVirtualOutput, path});
}

std::expected<std::unique_ptr<session::Recorder>, std::string>
MeasurementSession::record(const std::string& node) {
    auto recorder =
        std::make_unique<session::Recorder>(session_->serverSocket(), node, kSampleRate);
    if (!PrivateSession::waitFor([&] { return recorder->isRunning() && recorder->frames() > 0; },
                                 5000ms))
        return std::unexpected("Nothing can be recorded from " + node + ".");
    return recorder;
}

} // namespace halvo::demo
