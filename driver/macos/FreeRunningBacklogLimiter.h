#pragma once

#include "base/Realtime.h"
#include "driver/BacklogLimiter.h"

#include <cstddef>
#include <cstdint>

namespace halvo::driver {

/// Decides which blocks the ring takes where writer and reader have cycles of their own, of
/// different lengths. It learns how much the reader takes at once; what piles up beyond that and
/// two blocks would delay everything that follows. Audio thread.
class FreeRunningBacklogLimiter {
  public:
    /// Readers ask for no more frames at once; what is more was a leap.
    static constexpr std::uint64_t kLongest = 4096;

    /// Whether the ring takes this block of interleaved stereo, with the indices of before. Beyond
    /// the limit silent blocks are not taken, which nobody hears, nor any block for a reader that
    /// has stayed away. A ring that nobody has read yet takes everything.
    bool takes(const float* samples, std::size_t frames,
               const BacklogLimiter::Indices& indices) noexcept HALVO_REALTIME;

  private:
    bool begun_ = false;
    std::uint64_t lastRead_ = 0;
    std::uint64_t stride_ = 0; ///< the most frames read at once; 0: nobody has read yet
    std::uint64_t unread_ = 0; ///< frames offered since the reader last read
};

} // namespace halvo::driver
