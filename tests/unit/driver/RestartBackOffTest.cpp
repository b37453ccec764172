#include "driver/linux/RestartBackOff.h"

#include <gtest/gtest.h>

namespace {

using halvo::driver::RestartBackOff;
using Milliseconds = RestartBackOff::Milliseconds;

TEST(RestartBackOffTests, WaitsLongerForWhatDiesYoungAgainAndAgain) {
    RestartBackOff backOff;
    const Milliseconds young{1999};
    for (const int expected : {0, 100, 200, 400, 800, 1600, 3200, 6400, 12800, 25600, 30000, 30000})
        EXPECT_EQ(backOff.delayAfter(young).count(), expected);
    EXPECT_EQ(backOff.delayAfter(RestartBackOff::kYoung).count(), 0) << "one that lived is new";
    EXPECT_EQ(backOff.delayAfter(young).count(), 100);
}

} // namespace
