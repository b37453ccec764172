#pragma once

#include "base/Realtime.h"
#include "driver/BacklogLimiter.h"

#include <cstdint>
#include <functional>
#include <pipewire/pipewire.h>

namespace halvo::driver {

class RingWriter;
class CycleOrderLink;

/// Listens to what is played into the virtual sink, before its volume, and hands every frame to
/// the ring. Does not keep the sink awake while nobody plays. Main loop only; the frames pass on
/// the server's data thread until the destructor returns.
class CaptureStream {
  public:
    /// Asleep: nobody plays. Ended: the stream cannot go on.
    enum class State { asleep, awake, ended };
    using Changed = std::function<void(State)>;

    /// Connects at `rate` frames per second.
    CaptureStream(pw_core* core, RingWriter& ring, const CycleOrderLink& turn, std::uint32_t rate,
                  Changed changed);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    std::uint32_t rate() const { return rate_; }

  private:
    bool connect();
    static void onStateChanged(void* data, pw_stream_state old, pw_stream_state state,
                               const char* error);
    static void onControl(void* data, std::uint32_t id, const pw_stream_control* control);
    static void onProcess(void* data);
    void handOver(const spa_data& data) noexcept;

    RingWriter& ring_;
    const CycleOrderLink& turn_;
    BacklogLimiter pace_; // data thread only
    const std::uint32_t rate_;
    Changed changed_;
    pw_stream* stream_;
    spa_hook listener_{};
};

} // namespace halvo::driver
