#pragma once

#include <cstdint>
#include <pipewire/pipewire.h>
#include <string>

namespace halvo::session {

/// A stereo float stream with its own thread and server connection. The events arrive on the
/// server's data thread (process) or the stream's own thread (the rest); none after destruction.
class StreamHost {
  public:
    StreamHost() = default;
    ~StreamHost();
    StreamHost(const StreamHost&) = delete;
    StreamHost& operator=(const StreamHost&) = delete;

    /// Takes ownership of `properties`. False when no server listens at the socket.
    bool start(const std::string& socket, pw_direction direction, std::uint32_t rate,
               pw_properties* properties, const pw_stream_events& events, void* data);
    pw_stream* stream() const { return stream_; }

  private:
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    pw_stream* stream_ = nullptr;
    spa_hook listener_{};
};

} // namespace halvo::session
