#pragma once

#include "base/Realtime.h"

#include <cstddef>
#include <cstdint>

namespace halvo::driver {

/// Decides which blocks the ring takes, so that its backlog never grows beyond what the reader
/// needs. A reader does not skip frames: a backlog from the time when it was away would delay
/// everything that follows. Audio thread.
class BacklogLimiter {
  public:
    /// The ring's two indices, in frames, before the block is written.
    struct Indices {
        std::uint64_t write = 0;
        std::uint64_t read = 0;
    };
    /// Where in a cycle the reader reads: always after the writer, or nobody knows.
    enum class ReadOrder { afterWriter, unknown };

    /// Whether the ring takes this block of interleaved stereo. It drops silent blocks while more
    /// than necessary waits, which nobody hears, and all blocks once the reader has missed two. A
    /// ring that nobody has read yet takes everything.
    bool takes(const float* samples, std::size_t frames, const Indices& indices,
               ReadOrder order) noexcept HALVO_REALTIME;

  private:
    bool begun_ = false;
    bool everRead_ = false;
    std::uint64_t lastRead_ = 0;
    unsigned missed_ = 0; ///< blocks since the reader last read
};

} // namespace halvo::driver
