#include "Measurement.h"

#include "Progress.h"

#include <algorithm>
#include <optional>

namespace halvo::demo {
namespace {

using session::PrivateSession;
using session::Recording;

/// Longer than the sound stays anywhere on its way.
constexpr std::size_t kTailFrames = 8192;
constexpr std::size_t kAttempts = 4;

/// The same stretch of time at two places.
struct TwoRecordings {
    Recording sent;
    Recording heard;
};

std::expected<TwoRecordings, std::string> playAndRecord(MeasurementSession& session,
                                                        const std::string& path, const char* into,
                                                        const std::function<void()>& whilePlaying) {
    const auto atSpeakers = session.record(MeasurementSession::kSpeakers);
    if (!atSpeakers) return std::unexpected(atSpeakers.error());
    const auto atInput = session.record(into);
    if (!atInput) return std::unexpected(atInput.error());
    if (auto played = session.play(path, whilePlaying); !played)
        return std::unexpected(played.error());
    const std::size_t enough = (*atSpeakers)->frames() + kTailFrames;
    // A recorder that has stalled shows in the missing frames.
    (void)PrivateSession::waitFor([&] { return (*atSpeakers)->frames() >= enough; });
    return TwoRecordings{.sent = (*atInput)->recording(), .heard = (*atSpeakers)->recording()};
}

/// The server's clock at the recording's first frame.
std::int64_t begin(const Recording& recording) {
    return static_cast<std::int64_t>(recording.blocks.front().position);
}

/// The clock at which `sound` began in the output that the client plays into; nothing when it did
/// not arrive there whole or a recorder was not in time.
std::optional<std::int64_t> undisturbedBegin(const TwoRecordings& recordings,
                                             const StereoSound& sound) {
    if (recordings.sent.lostFrames() > 0 || recordings.heard.lostFrames() > 0) return std::nullopt;
    const auto found = std::ranges::search(recordings.sent.samples, sound.samples);
    if (found.empty()) return std::nullopt;
    return begin(recordings.sent) + (found.begin() - recordings.sent.samples.begin()) / 2;
}

} // namespace

std::expected<Measurement, std::string>
Measurement::make(MeasurementSession& session, const StereoSound& sound, const char* into,
                  const std::function<void()>& whilePlaying) {
    const auto path = session.prepare("measurement.wav", sound);
    if (!path) return std::unexpected(path.error());
    for (std::size_t repetitions = 0; repetitions < kAttempts; ++repetitions) {
        const auto recordings = playAndRecord(session, *path, into, whilePlaying);
        if (!recordings) return std::unexpected(recordings.error());
        if (const auto sentAt = undisturbedBegin(*recordings, sound)) {
            const Recording& heard = recordings->heard;
            if (heard.peak() <= 0)
                return std::unexpected("What was played did not arrive at the speakers.");
            // What a client plays straight into an output is in that output's monitor within the
            // same cycle: what comes first here is the delay of the way through Halvo.
            StereoSound all;
            all.samples = heard.samples;
            return Measurement{
                .heard = all.stretch(*sentAt - begin(heard), sound.frameCount() + kTailFrames),
                .repetitions = repetitions};
        }
        progress("The sound server missed a cycle; once more.");
    }
    return std::unexpected("The sound server misses cycles each time. Please try again when the "
                           "machine has less to do.");
}

} // namespace halvo::demo
