#include "Take.h"

#include "Alignment.h"
#include "Progress.h"

namespace halvo::demo {
namespace {

using session::PrivateSession;
using session::Recorder;
using session::Recording;

/// Longer than the sound stays anywhere on its way.
constexpr std::size_t kTailFrames = 8192;
constexpr std::size_t kMarginFrames = 4096;
constexpr std::size_t kAttempts = 4;

/// The same stretch of time at two places.
struct TwoRecordings {
    Recording sent;
    Recording heard;
};

std::expected<TwoRecordings, std::string> playAndRecord(Stage& stage, const std::string& path,
                                                        const char* into) {
    const auto atSpeakers = stage.record(Stage::kSpeakers);
    if (!atSpeakers) return std::unexpected(atSpeakers.error());
    const auto atInput = stage.record(into);
    if (!atInput) return std::unexpected(atInput.error());
    if (auto played = stage.play(path); !played) return std::unexpected(played.error());
    const std::size_t enough = (*atSpeakers)->frames() + kTailFrames;
    // A recorder that has stalled shows in the missing frames.
    (void)PrivateSession::waitFor([&] { return (*atSpeakers)->frames() >= enough; });
    return TwoRecordings{.sent = (*atInput)->recording(), .heard = (*atSpeakers)->recording()};
}

/// The clock's position at which `sound` began where the client plays into; nothing when it did not
/// arrive there whole or a recorder was not in time.
std::optional<std::int64_t> undisturbedBegin(const TwoRecordings& recordings,
                                             const StereoSound& sound) {
    if (recordings.sent.lostFrames() > 0 || recordings.heard.lostFrames() > 0) return std::nullopt;
    const auto sent = ClockedSound::from(recordings.sent);
    const auto alignment = Alignment::find(sound, sent.sound);
    if (!alignment ||
        sent.sound.stretch(alignment->offset, sound.frameCount()).samples != sound.samples)
        return std::nullopt;
    return sent.begin + alignment->offset;
}

std::expected<Take, std::string> evaluate(std::int64_t sentAt, const ClockedSound& heard,
                                          const StereoSound& sound) {
    const auto heardAt = Alignment::find(sound, heard.sound);
    if (!heardAt)
        return std::unexpected("What was played did not arrive at the speakers; the loudest sample "
                               "there was " +
                               std::to_string(heard.sound.peak()) + ".");
    Take take;
    take.heard = heard.sound.stretch(heardAt->offset, sound.frameCount());
    take.heardWithMargins =
        heard.sound.stretch(heardAt->offset - static_cast<std::ptrdiff_t>(kMarginFrames),
                            sound.frameCount() + 2 * kMarginFrames);
    take.gaps = countGaps(sound, take.heard);
    // What a client plays straight into an output is in that output's monitor within the same
    // cycle; so the two places differ by what the way through Halvo adds.
    take.delayFrames = heard.begin + heardAt->offset - sentAt;
    return take;
}

} // namespace

std::expected<Take, std::string> Take::record(Stage& stage, const std::string& path,
                                              const StereoSound& sound, const char* into) {
    for (std::size_t repetitions = 0; repetitions < kAttempts; ++repetitions) {
        const auto recordings = playAndRecord(stage, path, into);
        if (!recordings) return std::unexpected(recordings.error());
        if (const auto sentAt = undisturbedBegin(*recordings, sound)) {
            auto take = evaluate(*sentAt, ClockedSound::from(recordings->heard), sound);
            if (take) take->repetitions = repetitions;
            return take;
        }
        progress("The sound server missed a cycle; once more.");
    }
    return std::unexpected("The sound server misses cycles each time. Please try again when the "
                           "machine has less to do.");
}

} // namespace halvo::demo
