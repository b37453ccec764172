#include "posix/RingIdentity.h"

namespace halvo {

bool isSameRing(const RingHeader& mapped, const RingHeader& named) {
    const auto before = loadShared(mapped.writeIndex);
    const auto between = loadShared(named.writeIndex);
    const auto after = loadShared(mapped.writeIndex);
    return before <= between && between <= after && formatOf(mapped) == formatOf(named);
}

RingFormat formatOf(const RingHeader& ring) {
    return {loadShared(ring.sampleRate), loadShared(ring.channelCount), loadShared(ring.capacity)};
}

} // namespace halvo
