#include "session/Player.h"

#include "session/StreamHost.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace halvo::session {

struct Player::Stream {
    std::vector<float> samples;
    std::atomic<std::size_t> played{0}; // frames
    // Last: no event may arrive when the rest is gone.
    StreamHost host;

    static void onProcess(void* data);
};

void Player::Stream::onProcess(void* data) {
    auto* self = static_cast<Stream*>(data);
    pw_buffer* buffer = pw_stream_dequeue_buffer(self->host.stream());
    if (buffer == nullptr) return;
    constexpr std::uint32_t kStride = 2 * sizeof(float);
    spa_data& bytes = buffer->buffer->datas[0];
    if (bytes.data != nullptr) {
        std::size_t frames = bytes.maxsize / kStride;
        if (buffer->requested > 0) frames = std::min<std::size_t>(frames, buffer->requested);
        const std::size_t first = self->played.load(std::memory_order_relaxed);
        const std::size_t count = std::min(frames, self->samples.size() / 2 - first);
        auto* target = static_cast<float*>(bytes.data);
        std::copy_n(self->samples.begin() + static_cast<std::ptrdiff_t>(first * 2), count * 2,
                    target);
        // Silence behind the end, until the player goes.
        std::fill_n(target + count * 2, (frames - count) * 2, 0.0F);
        bytes.chunk->offset = 0;
        bytes.chunk->stride = static_cast<std::int32_t>(kStride);
        bytes.chunk->size = static_cast<std::uint32_t>(frames) * kStride;
        self->played.store(first + count, std::memory_order_release);
    }
    pw_stream_queue_buffer(self->host.stream(), buffer);
}

Player::Player(const std::string& socket, std::vector<float> samples, std::uint32_t rate,
               const std::string& target)
    : stream_(std::make_unique<Stream>()) {
    static const pw_stream_events events = [] {
        pw_stream_events result{};
        result.version = PW_VERSION_STREAM_EVENTS;
        result.process = Stream::onProcess;
        return result;
    }();
    stream_->samples = std::move(samples);
    pw_properties* properties =
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                          PW_KEY_MEDIA_ROLE, "Music", PW_KEY_NODE_NAME, "session-player", nullptr);
    if (!target.empty()) pw_properties_set(properties, PW_KEY_TARGET_OBJECT, target.c_str());
    (void)stream_->host.start(socket, PW_DIRECTION_OUTPUT, rate, properties, events, stream_.get());
}

Player::~Player() = default;

bool Player::hasStarted() const {
    return framesPlayed() > 0;
}

bool Player::isFinished() const {
    return framesPlayed() * 2 >= stream_->samples.size();
}

std::size_t Player::framesPlayed() const {
    return stream_->played.load(std::memory_order_acquire);
}

} // namespace halvo::session
