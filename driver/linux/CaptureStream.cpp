#include "driver/linux/CaptureStream.h"

#include "driver/RingWriter.h"
#include "driver/linux/CycleOrderLink.h"
#include "driver/linux/VirtualSink.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <utility>

namespace halvo::driver {

namespace {

constexpr std::size_t kFrameSize = RingWriter::kChannels * sizeof(float);

} // namespace

CaptureStream::CaptureStream(pw_core* core, RingWriter& ring, const CycleOrderLink& cycleOrder,
                             std::uint32_t rate, Changed changed)
    : ring_(ring), cycleOrder_(cycleOrder), rate_(rate), changed_(std::move(changed)) {
    static const pw_stream_events events = [] {
        pw_stream_events result{};
        result.version = PW_VERSION_STREAM_EVENTS;
        result.state_changed = onStateChanged;
        result.control_info = onControl;
        result.process = onProcess;
        return result;
    }();
    stream_ = pw_stream_new(
        core, "Halvo Audio Device",
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture",
                          PW_KEY_MEDIA_CLASS, "Stream/Input/Audio/Internal", PW_KEY_NODE_NAME,
                          "halvo-audio-device", PW_KEY_NODE_DESCRIPTION, "Halvo Audio Device",
                          PW_KEY_STREAM_CAPTURE_SINK, "true", PW_KEY_TARGET_OBJECT,
                          kVirtualDeviceUID, PW_KEY_NODE_GROUP, "halvo", PW_KEY_NODE_PASSIVE,
                          "true", PW_KEY_NODE_DONT_RECONNECT, "true", "state.restore-props",
                          "false", nullptr));
    if (stream_ != nullptr) pw_stream_add_listener(stream_, &listener_, &events, this);
    if (stream_ == nullptr || !connect()) changed_(State::ended);
}

CaptureStream::~CaptureStream() {
    if (stream_ == nullptr) return;
    // First: the destruction itself is not to be reported as a failure.
    spa_hook_remove(&listener_);
    pw_stream_destroy(stream_);
}

bool CaptureStream::connect() {
    std::array<std::uint8_t, 1024> buffer{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32_LE;
    format.rate = rate_;
    format.channels = RingWriter::kChannels;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::array<const spa_pod*, 1> parameters{
        spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    const auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    return pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, flags, parameters.data(), 1) >=
           0;
}

void CaptureStream::onStateChanged(void* data, pw_stream_state, pw_stream_state state,
                                   const char*) {
    auto* self = static_cast<CaptureStream*>(data);
    if (state == PW_STREAM_STATE_STREAMING) self->changed_(State::awake);
    if (state == PW_STREAM_STATE_PAUSED) self->changed_(State::asleep);
    if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
        self->changed_(State::ended);
    }
}

void CaptureStream::onControl(void* data, std::uint32_t id, const pw_stream_control* control) {
    auto* self = static_cast<CaptureStream*>(data);
    // The ring carries what was played: a volume or mute set on this stream is undone.
    if (id == SPA_PROP_mute && control->n_values > 0 && control->values[0] != 0.0F) {
        float off = 0.0F;
        pw_stream_set_control(self->stream_, SPA_PROP_mute, 1, &off, 0);
    }
    if (id != SPA_PROP_channelVolumes) return;
    const bool atUnity = std::all_of(control->values, control->values + control->n_values,
                                     [](float volume) { return volume == 1.0F; });
    std::array<float, RingWriter::kChannels> unity{};
    unity.fill(1.0F);
    if (!atUnity) {
        pw_stream_set_control(self->stream_, SPA_PROP_channelVolumes, RingWriter::kChannels,
                              unity.data(), 0);
    }
}

void CaptureStream::handOver(const spa_data& data) noexcept {
    if (data.data == nullptr || data.chunk == nullptr) return;
    // Another process wrote offset and size: never beyond the mapping.
    const std::uint32_t offset = std::min(data.chunk->offset, data.maxsize);
    const std::uint32_t size = std::min(data.chunk->size, data.maxsize - offset);
    const auto* bytes = static_cast<const std::byte*>(data.data) + offset;
    const auto* samples = reinterpret_cast<const float*>(bytes);
    const std::size_t frames = size / kFrameSize;
    using enum BacklogLimiter::ReadOrder;
    const auto order = cycleOrder_.isMade() ? afterWriter : unknown;
    if (limiter_.takes(samples, frames, ring_.indices(), order)) ring_.write(samples, frames);
}

void CaptureStream::onProcess(void* data) {
    auto* self = static_cast<CaptureStream*>(data);
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(self->stream_)) {
        self->handOver(buffer->buffer->datas[0]);
        pw_stream_queue_buffer(self->stream_, buffer);
    }
}

} // namespace halvo::driver
