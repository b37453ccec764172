#include "linux/pipewire/PipeWireWakeUp.h"

#include "linux/pipewire/PipeWireConnection.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <spa/param/audio/format-utils.h>

namespace halvo {

namespace {

constexpr std::uint32_t kFrameSize = sizeof(float);

pw_properties* properties(const std::string& sinkName) {
    const spa_dict_item items[] = {
        {PW_KEY_NODE_NAME, "halvo-wake-up"},
        {PW_KEY_NODE_DESCRIPTION, "Halvo"},
        {PW_KEY_MEDIA_TYPE, "Audio"},
        {PW_KEY_MEDIA_CATEGORY, "Playback"},
        {PW_KEY_MEDIA_CLASS, "Stream/Output/Audio/Internal"},
        {PW_KEY_TARGET_OBJECT, sinkName.c_str()},
        {PW_KEY_NODE_DONT_RECONNECT, "true"},
        {"node.dont-fallback", "true"},
        {PW_KEY_NODE_LINK_GROUP, PipeWireWakeUp::kLinkGroup},
        {"state.restore-props", "false"},
        {"state.restore-target", "false"},
    };
    const spa_dict dict{0, std::size(items), items};
    return pw_properties_new_dict(&dict);
}

} // namespace

PipeWireWakeUp::PipeWireWakeUp(PipeWireConnection& connection, const std::string& sinkName) {
    auto* core = connection.core();
    if (!core) return;
    stream_.reset(pw_stream_new(core, "Halvo", properties(sinkName)));
    if (!stream_) return;
    pw_stream_add_listener(stream_.get(), hook_.get(), &events(), this);
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.channels = 1;
    info.position[0] = SPA_AUDIO_CHANNEL_MONO;
    std::array<std::uint8_t, 512> storage;
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, storage.data(), storage.size());
    const spa_pod* params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
    constexpr auto kFlags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS);
    // A refusal leaves the sink asleep; whoever waits for it has a limit.
    (void)pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, kFlags, params, 1);
}

PipeWireWakeUp::~PipeWireWakeUp() = default;

const pw_stream_events& PipeWireWakeUp::events() {
    static const pw_stream_events events = [] {
        pw_stream_events table{};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.process = [](void* self) { static_cast<PipeWireWakeUp*>(self)->process(); };
        return table;
    }();
    return events;
}

void PipeWireWakeUp::process() noexcept {
    auto* buffer = pw_stream_dequeue_buffer(stream_.get());
    if (!buffer) return;
    auto& data = buffer->buffer->datas[0];
    if (data.data) {
        std::memset(data.data, 0, data.maxsize);
        data.chunk->offset = 0;
        data.chunk->stride = kFrameSize;
        data.chunk->size = data.maxsize / kFrameSize * kFrameSize;
    }
    pw_stream_queue_buffer(stream_.get(), buffer);
}

} // namespace halvo
