#include "qt/QtChildProcesses.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <sys/wait.h>

// Real programs, launched and followed on the main loop.

namespace halvo::test {

namespace {

using std::chrono_literals::operator""s;

bool loopUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    return true;
}

Command shell(const std::string& script) {
    return {"/bin/sh", {"-c", script}};
}

int openDescriptors() {
    int count = 0;
    DIR* folder = ::opendir("/proc/self/fd");
    while (::readdir(folder) != nullptr)
        ++count;
    ::closedir(folder);
    return count;
}

/// Whether any child is left, running or not.
bool hasChildren() {
    return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

} // namespace

TEST(ChildProcessTest, AHundredThatEndLeaveNothingBehind) {
    QtChildProcessLauncher launcher;
    int before = 0;
    for (int i = 0; i < 101; ++i) {
        std::string output;
        std::optional<int> status;
        bool ended = false;
        auto process = launcher.launch(shell("printf 'a line\\n'; exit 3"),
                                       {[&](const std::string& bytes) {
                                            EXPECT_FALSE(ended);
                                            output += bytes;
                                        },
                                        [&] { ended = true; }, [&](int code) { status = code; }});
        ASSERT_TRUE(process) << process.error();
        ASSERT_TRUE(loopUntil([&] { return ended && status; })) << i;
        EXPECT_EQ(output, "a line\n");
        EXPECT_EQ(status, 3);
        EXPECT_FALSE((*process)->isRunning());
        process->reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (i == 0) before = openDescriptors(); // the loop has its own by now
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

TEST(ChildProcessTest, AHandleMayGoWithinItsHandlerOrBeforeTheEnd) {
    QtChildProcessLauncher launcher;
    std::unique_ptr<ChildProcess> process;
    bool heard = false;
    bool heardMore = false;
    process =
        std::move(*launcher.launch(shell("echo one; sleep 0.2; echo two; sleep 60"),
                                   {[&](const std::string&) {
                                        heardMore = heard;
                                        heard = true;
                                        process.reset();
                                    },
                                    [&] { heardMore = true; }, [&](int) { heardMore = true; }}));
    ASSERT_TRUE(loopUntil([&] { return heard; }));
    ASSERT_TRUE(hasChildren()) << "it runs on";
    EXPECT_TRUE(loopUntil([] { return !hasChildren(); })) << "its output broke; it is reaped";
    EXPECT_FALSE(heardMore);
}

TEST(ChildProcessTest, StartsWithNothingOfOurs) {
    sigset_t termination;
    sigemptyset(&termination);
    sigaddset(&termination, SIGTERM);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &termination, nullptr), 0);
    const int leaking = ::fcntl(STDIN_FILENO, F_DUPFD, 50);
    QtChildProcessLauncher launcher;
    std::string output;
    bool ended = false;
    const auto script = "test -e /proc/$$/fd/" + std::to_string(leaking) +
                        " && echo leaked; exec grep SigBlk /proc/self/status";
    auto process = launcher.launch(
        shell(script),
        {[&](const std::string& bytes) { output += bytes; }, [&] { ended = true; }, {}});
    ASSERT_TRUE(process);
    EXPECT_TRUE(loopUntil([&] { return ended; }));
    EXPECT_EQ(output, "SigBlk:\t0000000000000000\n");

    std::optional<int> status;
    auto sleeper =
        launcher.launch(shell("exec sleep 60"), {{}, {}, [&](int code) { status = code; }});
    ASSERT_TRUE(sleeper);
    (*sleeper)->terminate();
    EXPECT_TRUE(loopUntil([&] { return status.has_value(); }));
    EXPECT_EQ(status, 128 + SIGTERM);
    ::close(leaking);
    (void)::pthread_sigmask(SIG_UNBLOCK, &termination, nullptr);
}

TEST(ChildProcessTest, WhatCannotBeLaunchedSaysWhy) {
    QtChildProcessLauncher launcher;
    const auto missing = launcher.launch({"/nonexistent/halvo-media-helper", {"loop"}}, {});
    ASSERT_FALSE(missing);
    EXPECT_TRUE(missing.error().ends_with("No such file or directory")) << missing.error();
    EXPECT_TRUE(launcher.run({"/etc/passwd", {}}).error().ends_with("Permission denied"));
    EXPECT_EQ(launcher.run(shell("exit 7")), 7);
    EXPECT_FALSE(hasChildren());
}

} // namespace halvo::test
