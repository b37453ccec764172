#pragma once

#include "base/Realtime.h"
#include "driver/BacklogLimiter.h"

#include <cstddef>
#include <cstdint>

namespace halvo::driver {

/// Decides which blocks the ring takes where writer and reader have I/O cycles of their own, of
/// different lengths. It learns the reader's block size; a backlog of more than that and two of the
/// writer's blocks would delay everything that follows. Audio thread.
class FreeRunningBacklogLimiter {
  public:
    /// Readers take no more frames at once; a larger step of the index was a jump.
    static constexpr std::uint64_t kLongest = 4096;

    /// Whether the ring takes this block of interleaved stereo, given the indices before it. Beyond
    /// the limit it drops silent blocks, which nobody hears, and every block while the reader is
    /// away. A ring that nobody has read yet takes everything.
    bool takes(const float* samples, std::size_t frames,
               const BacklogLimiter::Indices& indices) noexcept HALVO_REALTIME;

  private:
    bool begun_ = false;
    std::uint64_t lastRead_ = 0;
    std::uint64_t longestRead_ = 0; ///< the most frames read at once; 0: nobody has read yet
    std::uint64_t unread_ = 0;      ///< frames offered since the reader last read
};

} // namespace halvo::driver
