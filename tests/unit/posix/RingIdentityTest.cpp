#include "posix/RingIdentity.h"

#include <gtest/gtest.h>

namespace {

using halvo::RingHeader;

constexpr RingHeader kMapped{.writeIndex = 4096,
                             .readIndex = 4000,
                             .driverWord = 1,
                             .sampleRate = 48000,
                             .channelCount = 2,
                             .capacity = 16384,
                             .driverReserve = 0};

RingHeader changed(void (*change)(RingHeader&)) {
    RingHeader ring = kMapped;
    change(ring);
    return ring;
}

TEST(RingIdentity, IsToldByTheFormatAndTheWriteIndex) {
    const struct {
        const char* name;
        RingHeader named;
        bool same;
    } cases[] = {
        {"itself", kMapped, true},
        {"the reader has gone on", changed([](RingHeader& ring) { ring.readIndex = 4096; }), true},
        {"begun anew", changed([](RingHeader& ring) { ring.writeIndex = 0; }), false},
        {"ahead", changed([](RingHeader& ring) { ring.writeIndex = 4097; }), false},
        {"another rate", changed([](RingHeader& ring) { ring.sampleRate = 44100; }), false},
        {"another width", changed([](RingHeader& ring) { ring.channelCount = 1; }), false},
        {"another length", changed([](RingHeader& ring) { ring.capacity = 8192; }), false},
    };
    for (const auto& [name, named, same] : cases)
        EXPECT_EQ(halvo::isSameRing(kMapped, named), same) << name;
}

} // namespace
