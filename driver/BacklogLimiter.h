#pragma once

#include "base/Realtime.h"

#include <cstddef>
#include <cstdint>

namespace halvo::driver {

/// Decides which blocks the ring takes, so that sound never waits in it for longer than a reader
/// needs. A reader never catches up by itself: what piled up while it was away would delay
/// everything that follows. Audio thread.
class BacklogLimiter {
  public:
    /// The ring's two indices, in frames, before the block is written.
    struct Indices {
        std::uint64_t write = 0;
        std::uint64_t read = 0;
    };
    /// When the reader reads: after the writer in each cycle, or at any time.
    enum class Turn { afterWriter, anyTime };

    /// Whether the ring takes this block of interleaved stereo. Not taken are silent blocks while
    /// more waits than has to, which nobody hears, and blocks for a reader that has stayed away for
    /// two of them. A ring that nobody has read yet takes everything.
    bool takes(const float* samples, std::size_t frames, const Indices& indices,
               Turn turn) noexcept HALVO_REALTIME;

  private:
    bool begun_ = false;
    bool everRead_ = false;
    std::uint64_t lastRead_ = 0;
    unsigned missed_ = 0; ///< blocks since the reader last read
};

} // namespace halvo::driver
