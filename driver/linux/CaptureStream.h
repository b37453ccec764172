#pragma once

#include "base/Realtime.h"
#include "driver/BacklogLimiter.h"

#include <cstdint>
#include <functional>
#include <pipewire/pipewire.h>

namespace halvo::driver {

class RingWriter;
class CycleOrderLink;

/// Records the virtual sink's monitor, ahead of the sink's volume, into the ring. Does not keep the
/// sink awake while nobody plays. Main loop only; frames arrive on the server's data thread until
/// the destructor returns.
class CaptureStream {
  public:
    /// Asleep: nobody plays. Ended: the stream has failed.
    enum class State { asleep, awake, ended };
    using Changed = std::function<void(State)>;

    /// Connects at `rate` frames per second.
    CaptureStream(pw_core* core, RingWriter& ring, const CycleOrderLink& cycleOrder,
                  std::uint32_t rate, Changed changed);
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
    const CycleOrderLink& cycleOrder_;
    BacklogLimiter limiter_; // data thread only
    const std::uint32_t rate_;
    Changed changed_;
    pw_stream* stream_;
    spa_hook listener_{};
};

} // namespace halvo::driver
