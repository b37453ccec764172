#pragma once

#include "base/Lifetime.h"
#include "nowplaying/LineFramer.h"
#include "nowplaying/NowPlayingTrack.h"
#include "platform/Image.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace halvo {

/// Covers are scaled down to this many pixels.
constexpr int kLongestArtworkSide = 256;

class BackgroundQueue;
class MainQueue;
class SystemLog;

/// What is playing, ready to be published.
struct TrackPayload {
    std::optional<NowPlayingTrack> track; ///< nothing when nothing plays
    bool isPlaying = false;
    std::optional<Image> artwork;
};

/// Turns the helper's output into payloads. Splits lines on the main thread; parses JSON and
/// pictures in the background, one line after the other. Main thread. Memory is bounded: drops a
/// line of more than 16 MiB, and the oldest lines when more than 32 MiB are queued.
class HelperReader {
  public:
    /// `onPayload` runs on the main thread, in the order of the lines.
    HelperReader(BackgroundQueue& background, MainQueue& queue, ImageReader& images, SystemLog& log,
                 std::function<void(const TrackPayload&)> onPayload);
    ~HelperReader();

    /// Takes bytes that may be split anywhere; a line may even begin in one helper process and end
    /// in the next.
    void processIncomingData(const std::string& bytes);

  private:
    class Worker;

    BackgroundQueue& background_;
    SystemLog& log_;
    std::function<void(const TrackPayload&)> onPayload_;
    LineFramer framer_;
    Lifetime lifetime_;
    std::shared_ptr<Worker> worker_; ///< background part; outlives this while it works
};

} // namespace halvo
