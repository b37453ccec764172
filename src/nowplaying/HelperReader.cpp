#include "nowplaying/HelperReader.h"

#include "nowplaying/HelperMessage.h"
#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"
#include "platform/SystemLog.h"

#include <deque>
#include <mutex>
#include <utility>

namespace halvo {

namespace {

/// A cover of a few megabytes fits, in base64.
constexpr std::size_t kLongestLine = 16UL * 1024 * 1024;
constexpr std::size_t kMostWaiting = 2 * kLongestLine;

} // namespace

/// Parses the queued lines, on one background thread at a time.
class HelperReader::Worker {
  public:
    using Deliver = std::function<void(TrackPayload)>;

    Worker(ImageReader& images, SystemLog& log, Deliver deliver)
        : images_(images), log_(log), deliver_(std::move(deliver)) {}

    /// Queues a line; true when `work` has to be started. Main thread.
    bool add(std::string line) {
        const std::lock_guard lock(mutex_);
        waitingBytes_ += line.size();
        waiting_.push_back(std::move(line));
        // Each line replaces the previous state, so the oldest can be dropped.
        while (waitingBytes_ > kMostWaiting)
            (void)takeFirst();
        return !std::exchange(isWorking_, true);
    }

    /// Parses until the queue is empty. Background.
    void work() {
        while (const auto line = next())
            read(*line);
    }

  private:
    std::string takeFirst() {
        auto line = std::move(waiting_.front());
        waiting_.pop_front();
        waitingBytes_ -= line.size();
        return line;
    }

    std::optional<std::string> next() {
        const std::lock_guard lock(mutex_);
        isWorking_ = !waiting_.empty();
        return isWorking_ ? std::optional(takeFirst()) : std::nullopt;
    }

    void read(const std::string& line) {
        auto message = parseHelperMessage(line);
        if (!message) {
            log_.write("Halvo: Failed to parse helper JSON: " + message.error());
        } else if (*message) {
            deliver_({(*message)->track, (*message)->isPlaying,
                      artworkOf((*message)->artworkDataBase64)});
        }
    }

    std::optional<Image> artworkOf(const std::string& base64) {
        if (base64.empty()) return std::nullopt;
        // Players repeat a track's picture with every change of state.
        const std::pair fingerprint{base64.size(), std::hash<std::string>{}(base64)};
        if (std::exchange(lastFingerprint_, fingerprint) != fingerprint) {
            const auto bytes = decodeBase64(base64);
            lastArtwork_ = bytes ? images_.read(*bytes, kLongestArtworkSide) : std::nullopt;
        }
        return lastArtwork_;
    }

    ImageReader& images_;
    SystemLog& log_;
    const Deliver deliver_;

    std::mutex mutex_; ///< guards the next three members
    std::deque<std::string> waiting_;
    std::size_t waitingBytes_ = 0;
    bool isWorking_ = false;

    // Background thread only.
    std::pair<std::size_t, std::size_t> lastFingerprint_; ///< of base64: its size and hash
    std::optional<Image> lastArtwork_;
};

HelperReader::HelperReader(BackgroundQueue& background, MainQueue& queue, ImageReader& images,
                           SystemLog& log, std::function<void(const TrackPayload&)> onPayload)
    : background_(background), log_(log), onPayload_(std::move(onPayload)), framer_(kLongestLine) {
    auto deliver = [this, alive = lifetime_.watch(), &queue](TrackPayload payload) {
        queue.async([this, alive, payload = std::move(payload)] {
            if (!alive.expired()) onPayload_(payload);
        });
    };
    worker_ = std::make_shared<Worker>(images, log, std::move(deliver));
}

HelperReader::~HelperReader() = default;

void HelperReader::processIncomingData(const std::string& bytes) {
    framer_.append(
        bytes,
        [this](std::string line) {
            if (line.empty() || !worker_->add(std::move(line))) return;
            background_.async([worker = worker_] { worker->work(); });
        },
        [this] {
            log_.write("Halvo: Failed to parse helper JSON: a line of more than " +
                       std::to_string(kLongestLine) + " bytes");
        });
}

} // namespace halvo
