#pragma once

#include "base/Realtime.h"
#include "driver/RingWriter.h"
#include "driver/macos/FrameClock.h"
#include "driver/macos/FreeRunningBacklogLimiter.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace halvo::driver {

/// The virtual output: its rate, its controls, its clock and the ring that it plays into. Any
/// thread, except where it says audio thread: that takes no lock.
class VirtualDevice {
  public:
    static constexpr std::array<std::uint32_t, 4> kRates{44100, 48000, 88200, 96000};

    /// Tries to make the ring at once, so that it is there before anybody plays.
    VirtualDevice(std::string ringName, RingAccess access, Timebase timebase);

    /// Frames per second.
    std::uint32_t rate() const { return rate_; }
    /// Only between I/O cycles, as the host arranges it. False for a rate that is none of kRates.
    bool setRate(std::uint32_t rate, std::uint64_t hostTime);

    /// 0 to 1. The samples are not scaled by it; the application reads and applies it.
    float volume() const { return volume_; }
    void setVolume(float scalar);
    bool isMuted() const { return muted_; }
    void setMuted(bool muted) { muted_ = muted; }
    /// Whether the stream takes part in I/O.
    bool isStreamActive() const { return streamActive_; }
    void setStreamActive(bool active) { streamActive_ = active; }

    /// The first of several starts begins the clock, and makes a ring that is missing. False when
    /// there are too many of them.
    bool startIO(std::uint64_t hostTime);
    /// False when nothing was started.
    bool stopIO();
    bool isRunning() const { return starts_ > 0; }
    /// Why there is no ring, for a person; empty while there is one.
    std::string ringProblem();

    /// The clock's last stamp at the host's time `now`. Audio thread.
    ZeroTimeStamp zeroTimeStamp(std::uint64_t now) const noexcept HALVO_REALTIME {
        return clock_.at(now);
    }
    /// A cycle's mix, interleaved stereo. Audio thread.
    void write(const float* samples, std::size_t frames) noexcept HALVO_REALTIME;

  private:
    void ensureRing();

    const std::string ringName_;
    const RingAccess access_;
    std::atomic<std::uint32_t> rate_;
    std::atomic<float> volume_;
    std::atomic<bool> muted_{false};
    std::atomic<bool> streamActive_{true};

    std::mutex mutex_; ///< over starts, rate and ring; never taken by the audio thread
    std::atomic<std::uint32_t> starts_{0};
    FrameClock clock_;
    std::unique_ptr<RingWriter> owned_;
    std::string problem_;
    std::atomic<RingWriter*> ring_{nullptr}; ///< replaced only while no I/O runs
    FreeRunningBacklogLimiter stride_;       // audio thread only
};

} // namespace halvo::driver
