#pragma once

#include "platform/RingLayout.h"

namespace halvo {

/// Whether two mappings show one ring, as far as its words tell: the same format, and a write index
/// that the first one had between two looks. Two rings in which nothing is written may pass for
/// one until something is. Any thread.
bool isSameRing(const RingHeader& mapped, const RingHeader& named);

/// What about a ring changes only when its driver changes it.
struct RingFormat {
    std::uint32_t sampleRate = 0;
    std::uint32_t channelCount = 0;
    std::uint32_t capacity = 0;

    bool operator==(const RingFormat&) const = default;
};

RingFormat formatOf(const RingHeader& ring);

} // namespace halvo
