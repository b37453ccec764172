#include "Take.h"

#include "Alignment.h"

namespace halvo::demo {
namespace {

using session::PrivateSession;
using session::Recorder;

/// Longer than the sound stays anywhere on its way.
constexpr std::size_t kTailFrames = 12288;
constexpr std::size_t kMarginFrames = 4096;

void waitForTail(const Recorder& recorder) {
    const std::size_t enough = recorder.frames() + kTailFrames;
    // A recorder that has stalled is noticed by its missing frames.
    (void)PrivateSession::waitFor([&] { return recorder.frames() >= enough; });
}

/// The clock's position at which a recording has the beginning of `sound`.
std::expected<std::int64_t, std::string>
arrival(const StereoSound& sound, const ClockedSound& recording, const std::string& node) {
    const auto alignment = Alignment::find(sound, recording.sound);
    if (!alignment)
        return std::unexpected("What was played did not arrive at " + node +
                               " (the loudest sample there was " +
                               std::to_string(recording.sound.peak()) + ").");
    return recording.begin + alignment->offset;
}

} // namespace

std::expected<Take, std::string> Take::record(Stage& stage, const std::string& path,
                                              const StereoSound& sound, Delay delay) {
    auto atSpeakers = stage.record(Stage::kSpeakers);
    if (!atSpeakers) return std::unexpected(atSpeakers.error());
    std::unique_ptr<Recorder> atVirtualOutput;
    if (delay == Delay::measured) {
        auto recorder = stage.record(Stage::kVirtualOutput);
        if (!recorder) return std::unexpected(recorder.error());
        atVirtualOutput = std::move(*recorder);
    }
    if (auto played = stage.play(path); !played) return std::unexpected(played.error());
    waitForTail(**atSpeakers);

    const auto recording = ClockedSound::from((*atSpeakers)->recording());
    const auto heardAt = arrival(sound, recording, "the speakers");
    if (!heardAt) return std::unexpected(heardAt.error());
    const std::int64_t first = *heardAt - recording.begin;
    Take take;
    take.heard = recording.sound.stretch(first, sound.frameCount());
    take.heardWithMargins = recording.sound.stretch(
        first - static_cast<std::int64_t>(kMarginFrames), sound.frameCount() + 2 * kMarginFrames);
    take.gaps = countGaps(sound, take.heard);
    if (atVirtualOutput) {
        // A client that plays straight into a device is in that device's monitor within the same
        // cycle; so the two monitors differ by what the way through the application adds.
        const auto sentAt =
            arrival(sound, ClockedSound::from(atVirtualOutput->recording()), "the virtual output");
        if (!sentAt) return std::unexpected(sentAt.error());
        take.delayFrames = *heardAt - *sentAt;
    }
    return take;
}

} // namespace halvo::demo
