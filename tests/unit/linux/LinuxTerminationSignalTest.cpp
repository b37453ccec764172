#include "linux/process/LinuxTerminationSignal.h"

#include "fake/FakeAudioHardware.h"
#include "fake/FakeMainQueue.h"
#include "platform/UserDefaults.h"
#include "unit/linux/TemporaryDirectory.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {

using halvo::AudioHardware;
using halvo::FakeAudioHardware;
using halvo::LinuxTerminationSignal;
using halvo::UserDefaults;
using halvo::test::put;
using halvo::test::TemporaryDirectory;

/// Names the saved settings, for the processes of a test too: those end without tidying up.
constexpr const char* kDefaults = "HALVO_TEST_DEFAULTS";

/// A process of its own that handles SIGTERM as the program does. Each test runs in a fresh one.
struct Process {
    Process() { LinuxTerminationSignal::blockBeforeThreads(); }
    LinuxTerminationSignal signal() {
        return {main, [this] { return std::make_unique<FakeAudioHardware>(queue, log); },
                std::getenv(kDefaults)};
    }

    halvo::FakeMainQueue queue;
    halvo::CallLog log;
    FakeAudioHardware main{queue, log};
};

FakeAudioHardware* mainHardware = nullptr;

void say(const char* text) {
    (void)std::fprintf(stderr, "%s ", text);
}

void sayWhatIsSaved(AudioHardware& /*hardware*/, const UserDefaults& defaults) {
    say(mainHardware->isSilenced() ? "silenced" : "listening");
    say(defaults.stringForKey("uid").value_or("nothing").c_str());
}

void never(AudioHardware& /*hardware*/, const UserDefaults& /*defaults*/) {
    say("handler");
}

void hang(AudioHardware& /*hardware*/, const UserDefaults& /*defaults*/) {
    say("hanging");
    while (true)
        ::pause();
}

class LinuxTerminationSignalTests : public testing::Test {
  protected:
    LinuxTerminationSignalTests() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        if (std::getenv(kDefaults) != nullptr) return;
        directory_.emplace();
        put(*directory_ / "defaults.json", R"({"uid": "speakers"})");
        ::setenv(kDefaults, (*directory_ / "defaults.json").c_str(), 1);
    }
    ~LinuxTerminationSignalTests() override {
        if (directory_) ::unsetenv(kDefaults);
    }

  private:
    std::optional<TemporaryDirectory> directory_;
};

TEST_F(LinuxTerminationSignalTests, HandlesTheSignalOnceThenDiesByIt) {
    const auto run = [] {
        Process process;
        mainHardware = &process.main;
        auto signal = process.signal();
        signal.install(sayWhatIsSaved);
        (void)::kill(::getpid(), SIGTERM);
        (void)::kill(::getpid(), SIGTERM);
        while (true)
            ::pause();
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "^silenced speakers $");
}

TEST_F(LinuxTerminationSignalTests, ASignalFromBeforeTheInstallationIsNotLost) {
    const auto run = [] {
        Process process;
        mainHardware = &process.main;
        auto signal = process.signal();
        (void)::kill(::getpid(), SIGTERM);
        say("alive");
        signal.install(sayWhatIsSaved);
        while (true)
            ::pause();
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "^alive silenced speakers $");
}

TEST_F(LinuxTerminationSignalTests, AHandlerThatHangsDoesNotKeepTheProcess) {
    const auto run = [] {
        Process process;
        auto signal = process.signal();
        signal.install(hang);
        (void)::kill(::getpid(), SIGTERM);
        while (true)
            ::pause();
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "^hanging $");
}

TEST_F(LinuxTerminationSignalTests, AfterTheNormalEndTheSignalWaitsUntilItIsUnblocked) {
    const auto run = [] {
        Process process;
        {
            auto signal = process.signal();
            signal.install(never);
        }
        (void)::kill(::getpid(), SIGTERM);
        say("blocked");
        LinuxTerminationSignal::unblock();
        say("not reached");
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "^blocked $");
}

} // namespace
