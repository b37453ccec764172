#include "session/StreamHost.h"

#include "linux/pipewire/ClientConfiguration.h"

#include <array>
#include <spa/param/audio/format-utils.h>
#include <unistd.h>

namespace halvo::session {

StreamHost::~StreamHost() {
    if (loop_ == nullptr) return;
    pw_thread_loop_stop(loop_);
    if (stream_ != nullptr) pw_stream_destroy(stream_);
    if (core_ != nullptr) pw_core_disconnect(core_);
    if (context_ != nullptr) pw_context_destroy(context_);
    pw_thread_loop_destroy(loop_);
    pw_deinit();
}

bool StreamHost::start(const std::string& socket, pw_direction direction, std::uint32_t rate,
                       pw_properties* properties, const pw_stream_events& events, void* data) {
    pw_init(nullptr, nullptr);
    loop_ = pw_thread_loop_new("stream-host", nullptr);
    // The real-time configuration: otherwise the data thread competes with the build machine.
    // Without privileges that asks for them on the bus of this process, which is not the session's.
    const bool isPrivileged = ::geteuid() == 0;
    context_ =
        pw_context_new(pw_thread_loop_get_loop(loop_),
                       pw_properties_new(PW_KEY_CONFIG_NAME, realtimeClientConfiguration(),
                                         "module.rt", isPrivileged ? "true" : "false", nullptr),
                       0);
    if (context_ != nullptr) {
        core_ = pw_context_connect(
            context_, pw_properties_new(PW_KEY_REMOTE_NAME, socket.c_str(), nullptr), 0);
    }
    if (core_ == nullptr) {
        pw_properties_free(properties);
        return false;
    }
    // No level that the session manager remembers from an earlier stream.
    pw_properties_set(properties, "state.restore-props", "false");
    stream_ = pw_stream_new(core_, "session stream", properties);
    pw_stream_add_listener(stream_, &listener_, &events, data);

    std::array<std::uint8_t, 1024> buffer{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = rate;
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::array<const spa_pod*, 1> parameters{
        spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    const auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    const bool connected =
        pw_stream_connect(stream_, direction, PW_ID_ANY, flags, parameters.data(), 1) >= 0;
    pw_thread_loop_start(loop_);
    return connected;
}

} // namespace halvo::session
