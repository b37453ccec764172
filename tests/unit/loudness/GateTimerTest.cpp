#include "loudness/GateTimer.h"
#include "fake/FakeMainQueue.h"
#include "loudness/OutputGate.h"

#include <gtest/gtest.h>

namespace halvo::test {

using namespace std::chrono_literals;

TEST(GateTimer, ALaterCallCountsWhetherItsTimeIsLongerOrShorter) {
    FakeMainQueue queue;
    OutputGate gate;
    GateTimer timer(gate, queue);
    timer.closeFor(60ms);
    queue.advance(30ms);
    timer.closeFor(1s);
    queue.advance(900ms);
    EXPECT_FALSE(gate.isOpen());
    timer.closeFor(60ms);
    queue.advance(70ms);
    EXPECT_TRUE(gate.isOpen());
}

} // namespace halvo::test
