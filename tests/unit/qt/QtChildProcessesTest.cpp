#include "qt/QtChildProcesses.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>

namespace {

TEST(QtRunProcessTests, TheChildInheritsNoBlockedSignal) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
    const auto result = halvo::runProcess({"grep", {"SigBlk", "/proc/self/status"}}, {});
    ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
    ASSERT_TRUE(result) << result.error();
    EXPECT_EQ(result->output, "SigBlk:\t0000000000000000\n");
}

TEST(QtRunProcessTests, OneThatTakesTooLongIsKilled) {
    const auto result = halvo::runProcess({"sleep", {"1000"}}, std::chrono::milliseconds(10));
    ASSERT_TRUE(result) << result.error();
    EXPECT_EQ(result->status, 128 + SIGKILL);
}

} // namespace
