#include "linux/pipewire/PipeWireStream.h"

#include "linux/pipewire/PipeWireConnection.h"
#include "linux/pipewire/PipeWireRenderer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <spa/node/io.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <vector>

namespace halvo {

namespace {

/// The standard speaker positions; other channel counts have none and are mapped one to one.
void setPositions(spa_audio_info_raw& info) {
    static constexpr std::array<std::uint32_t, 8> kSurround = {
        SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC, SPA_AUDIO_CHANNEL_LFE,
        SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR, SPA_AUDIO_CHANNEL_SL, SPA_AUDIO_CHANNEL_SR};
    static constexpr std::array<std::uint32_t, 4> kQuad = {
        SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
    switch (info.channels) {
    case 1:
        info.position[0] = SPA_AUDIO_CHANNEL_MONO;
        break;
    case 4:
        std::ranges::copy(kQuad, info.position);
        break;
    case 2:
    case 6:
    case 8:
        std::copy_n(kSurround.begin(), info.channels, info.position);
        break;
    default:
        info.flags |= SPA_AUDIO_FLAG_UNPOSITIONED;
        break;
    }
}

pw_properties* streamProperties(const std::string& sinkName) {
    // One group with the virtual device's capture: one clock, no resampling. Without its sink the
    // session manager destroys the stream instead of linking it to the default output, which may be
    // the virtual device: WirePlumber 0.4 by dont-reconnect, 0.5 by dont-fallback. By the
    // link group PipeWireGraph knows the stream as Halvo's own.
    constexpr const char* kGroup = "halvo";
    const spa_dict_item items[] = {
        {PW_KEY_NODE_NAME, "halvo"},
        {PW_KEY_NODE_DESCRIPTION, "Halvo"},
        {PW_KEY_APP_NAME, "Halvo"},
        {PW_KEY_MEDIA_TYPE, "Audio"},
        {PW_KEY_MEDIA_CATEGORY, "Playback"},
        {PW_KEY_MEDIA_CLASS, "Stream/Output/Audio/Internal"},
        {PW_KEY_TARGET_OBJECT, sinkName.c_str()},
        {PW_KEY_NODE_DONT_RECONNECT, "true"},
        {"node.dont-fallback", "true"},
        {PW_KEY_NODE_PASSIVE, "true"},
        {PW_KEY_NODE_GROUP, kGroup},
        {PW_KEY_NODE_LINK_GROUP, kGroup},
        {"state.restore-props", "false"},
        {"state.restore-target", "false"},
    };
    const spa_dict dict{0, std::size(items), items};
    return pw_properties_new_dict(&dict);
}

} // namespace

PipeWireStream::PipeWireStream(PipeWireConnection& connection, Owner& owner,
                               PipeWireRenderer& renderer, const StreamFormat& format)
    : connection_(connection), owner_(owner), renderer_(renderer), format_(format),
      settling_(connection, renderer, format, [this] { owner_.flowChanged(false); }) {}

std::unique_ptr<PipeWireStream> PipeWireStream::create(PipeWireConnection& connection, Owner& owner,
                                                       PipeWireRenderer& renderer,
                                                       const std::string& sinkName,
                                                       const StreamFormat& format) {
    std::unique_ptr<PipeWireStream> stream(new PipeWireStream(connection, owner, renderer, format));
    return stream->connect(sinkName) ? std::move(stream) : nullptr;
}

PipeWireStream::~PipeWireStream() {
    if (trigger_) trigger_->end();
}

bool PipeWireStream::connect(const std::string& sinkName) {
    auto* core = connection_.core();
    if (!core) return false;
    stream_.reset(pw_stream_new(core, "Halvo", streamProperties(sinkName)));
    if (!stream_) return false;
    pw_stream_add_listener(stream_.get(), hook_.get(), &events(), this);

    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.rate = static_cast<std::uint32_t>(format_.sampleRate);
    info.channels = format_.channels;
    setPositions(info);
    std::array<std::uint8_t, 1024> storage;
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, storage.data(), storage.size());
    const spa_pod* params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
    constexpr auto kFlags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                     PW_STREAM_FLAG_RT_PROCESS | PW_STREAM_FLAG_TRIGGER);
    if (pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, kFlags, params, 1) < 0) {
        return false;
    }
    trigger_ = PipeWireCycleTrigger::create(connection_, *this);
    return trigger_ != nullptr;
}

const pw_stream_events& PipeWireStream::events() {
    static const pw_stream_events events = [] {
        pw_stream_events table{};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = [](void* self, pw_stream_state, pw_stream_state state, const char*) {
            static_cast<PipeWireStream*>(self)->stateChanged(state);
        };
        table.control_info = [](void* self, std::uint32_t id, const pw_stream_control* control) {
            if (control) static_cast<PipeWireStream*>(self)->controlChanged(id, *control);
        };
        table.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id != SPA_IO_Position) return;
            static_cast<PipeWireStream*>(self)->position_.store(
                static_cast<const spa_io_position*>(area), std::memory_order_release);
        };
        table.process = [](void* self) { static_cast<PipeWireStream*>(self)->process(); };
        return table;
    }();
    return events;
}

void PipeWireStream::stateChanged(pw_stream_state state) {
    const bool flows = state == PW_STREAM_STATE_STREAMING;
    if (flows) {
        settling_.end();
        owner_.flowChanged(true);
    } else if (streaming_.load(std::memory_order_relaxed)) {
        settling_.begin();
    } else if (state == PW_STREAM_STATE_PAUSED) {
        owner_.flowChanged(false);
    }
    streaming_.store(flows, std::memory_order_release);
    if (state == PW_STREAM_STATE_PAUSED || state == PW_STREAM_STATE_STREAMING) connected_ = true;
    const bool ended =
        state == PW_STREAM_STATE_ERROR || (connected_ && state == PW_STREAM_STATE_UNCONNECTED);
    if (ended) owner_.streamFailed();
}

void PipeWireStream::triggerFailed() {
    owner_.streamFailed();
}

void PipeWireStream::controlChanged(std::uint32_t id, const pw_stream_control& control) {
    // The session manager restores a saved volume for a stream of this name. This stream must stay
    // at unity gain.
    const bool isMute = id == SPA_PROP_mute;
    if (!isMute && id != SPA_PROP_volume && id != SPA_PROP_channelVolumes) return;
    const float unity = isMute ? 0.0F : 1.0F;
    std::vector<float> values(control.values, control.values + control.n_values);
    if (std::ranges::all_of(values, [unity](float value) { return value == unity; })) return;
    std::ranges::fill(values, unity);
    pw_stream_set_control(stream_.get(), id, static_cast<std::uint32_t>(values.size()),
                          values.data(), 0);
}

void PipeWireStream::cycleTriggered() noexcept {
    // An inactive stream would accept sound without playing it.
    if (streaming_.load(std::memory_order_acquire)) (void)pw_stream_trigger_process(stream_.get());
}

void PipeWireStream::process() noexcept {
    if (const auto* position = position_.load(std::memory_order_acquire)) {
        renderer_.clock(position->clock.id, position->clock.position, position->clock.duration);
    }
    auto* buffer = pw_stream_dequeue_buffer(stream_.get());
    if (!buffer) return;
    auto& data = buffer->buffer->datas[0];
    if (auto* samples = static_cast<float*>(data.data)) {
        const auto stride = format_.bytesPerFrame();
        auto frames = data.maxsize / stride;
        if (buffer->requested > 0) {
            frames = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, buffer->requested));
        }
        renderer_.render(samples, frames);
        data.chunk->offset = 0;
        data.chunk->stride = static_cast<std::int32_t>(stride);
        data.chunk->size = frames * stride;
    }
    pw_stream_queue_buffer(stream_.get(), buffer);
}

} // namespace halvo
