#include "driver/linux/RestartPace.h"

#include <gtest/gtest.h>

namespace {

using halvo::driver::RestartPace;
using Milliseconds = RestartPace::Milliseconds;

TEST(RestartPaceTests, WaitsLongerForWhatDiesYoungAgainAndAgain) {
    RestartPace pace;
    const Milliseconds young{1999};
    for (const int expected : {0, 100, 200, 400, 800, 1600, 3200, 6400, 12800, 25600, 30000, 30000})
        EXPECT_EQ(pace.delayAfter(young).count(), expected);
    EXPECT_EQ(pace.delayAfter(RestartPace::kYoung).count(), 0) << "one that lived is new";
    EXPECT_EQ(pace.delayAfter(young).count(), 100);
}

} // namespace
