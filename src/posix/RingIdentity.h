#pragma once

#include "platform/RingLayout.h"

namespace halvo {

/// Whether two mappings show the same ring, judging by its contents: the format is equal, and the
/// second write index lies between two readings of the first. Two rings that nobody writes to may
/// pass for one. Any thread.
bool isSameRing(const RingHeader& mapped, const RingHeader& named);

/// The part of the header that changes only when the driver reconfigures the ring.
struct RingFormat {
    std::uint32_t sampleRate = 0;
    std::uint32_t channelCount = 0;
    std::uint32_t capacity = 0;

    bool operator==(const RingFormat&) const = default;
};

RingFormat formatOf(const RingHeader& ring);

} // namespace halvo
