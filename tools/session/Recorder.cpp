#include "session/Recorder.h"

#include "session/StreamHost.h"

#include <algorithm>
#include <atomic>
#include <spa/node/io.h>

namespace halvo::session {

/// Allocated up front; what lies below the counters may be read from any thread.
struct Recorder::Stream {
    std::vector<float> samples;
    std::vector<Recording::Block> blocks;
    std::atomic<std::size_t> frameCount{0};
    std::atomic<std::size_t> blockCount{0};
    std::atomic<std::size_t> firstBlock{0};
    const spa_io_position* position = nullptr; // data thread only
    // Last, so destroyed first: no event may arrive after that.
    StreamHost host;

    static void onIoChanged(void* data, std::uint32_t id, void* area, std::uint32_t) {
        if (id == SPA_IO_Position) {
            static_cast<Stream*>(data)->position = static_cast<const spa_io_position*>(area);
        }
    }
    static void onProcess(void* data);
    void take(const float* source, std::size_t frames);
};

void Recorder::Stream::take(const float* source, std::size_t frames) {
    const std::size_t first = frameCount.load(std::memory_order_relaxed);
    const std::size_t block = blockCount.load(std::memory_order_relaxed);
    if (block >= blocks.size() || (first + frames) * 2 > samples.size()) return;
    std::copy_n(source, frames * 2, samples.begin() + static_cast<std::ptrdiff_t>(first * 2));
    blocks[block] = {position != nullptr ? position->clock.position : first, first, frames};
    frameCount.store(first + frames, std::memory_order_release);
    blockCount.store(block + 1, std::memory_order_release);
}

void Recorder::Stream::onProcess(void* data) {
    auto* self = static_cast<Stream*>(data);
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(self->host.stream())) {
        const spa_data& bytes = buffer->buffer->datas[0];
        if (bytes.data != nullptr) {
            const auto offset = std::min(bytes.chunk->offset, bytes.maxsize);
            const auto size = std::min(bytes.chunk->size, bytes.maxsize - offset);
            const auto* start = static_cast<const std::uint8_t*>(bytes.data) + offset;
            self->take(reinterpret_cast<const float*>(start), size / (2 * sizeof(float)));
        }
        pw_stream_queue_buffer(self->host.stream(), buffer);
    }
}

Recorder::Recorder(const std::string& socket, const std::string& nodeName, std::uint32_t rate,
                   double maxSeconds, Sink sink)
    : stream_(std::make_unique<Stream>()) {
    static const pw_stream_events events = [] {
        pw_stream_events result{};
        result.version = PW_VERSION_STREAM_EVENTS;
        result.io_changed = Stream::onIoChanged;
        result.process = Stream::onProcess;
        return result;
    }();
    const auto frames = static_cast<std::size_t>(maxSeconds * static_cast<double>(rate));
    stream_->samples.resize(frames * 2);
    stream_->blocks.resize(frames / 32 + 1);
    pw_properties* properties = pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_NODE_NAME,
        "session-recorder", PW_KEY_STREAM_CAPTURE_SINK, "true", PW_KEY_TARGET_OBJECT,
        nodeName.c_str(), PW_KEY_NODE_DONT_RECONNECT, "true", nullptr);
    if (sink == Sink::maySleep) pw_properties_set(properties, PW_KEY_NODE_PASSIVE, "true");
    (void)stream_->host.start(socket, PW_DIRECTION_INPUT, rate, properties, events, stream_.get());
}

Recorder::~Recorder() = default;

bool Recorder::isRunning() const {
    return frames() > 0;
}

std::size_t Recorder::frames() const {
    const std::size_t last = stream_->blockCount.load(std::memory_order_acquire);
    const std::size_t first = stream_->firstBlock.load(std::memory_order_acquire);
    if (first >= last) return 0;
    const auto& end = stream_->blocks[last - 1];
    return end.firstFrame + end.frames - stream_->blocks[first].firstFrame;
}

Recording Recorder::recording() const {
    Recording result;
    const std::size_t last = stream_->blockCount.load(std::memory_order_acquire);
    const std::size_t first = std::min(stream_->firstBlock.load(std::memory_order_acquire), last);
    if (first == last) return result;
    const auto& blocks = stream_->blocks;
    const std::size_t begin = blocks[first].firstFrame;
    const std::size_t end = blocks[last - 1].firstFrame + blocks[last - 1].frames;
    const auto at = [&](std::size_t frame) {
        return stream_->samples.begin() + static_cast<std::ptrdiff_t>(frame * 2);
    };
    result.samples.assign(at(begin), at(end));
    for (std::size_t index = first; index < last; ++index) {
        result.blocks.push_back(blocks[index]);
        result.blocks.back().firstFrame -= begin;
    }
    return result;
}

void Recorder::clear() {
    stream_->firstBlock.store(stream_->blockCount.load(std::memory_order_acquire),
                              std::memory_order_release);
}

} // namespace halvo::session
