#include "linux/process/ApplicationService.h"
#include "linux/process/SyslogSystemLog.h"
#include "posix/ProcessStandardOutput.h"

#include "fake/FakeServices.h"
#include "unit/linux/TemporaryDirectory.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace {

using halvo::ApplicationService;
using halvo::ProcessStandardOutput;
using halvo::test::TemporaryDirectory;

/// Redirects standard output to a pipe.
class OutputPipe {
  public:
    explicit OutputPipe(int flags = 0) {
        EXPECT_EQ(::pipe2(ends_.data(), flags), 0);
        ::dup2(ends_[1], STDOUT_FILENO);
        ::close(ends_[1]);
    }
    ~OutputPipe() {
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
        closeReader();
    }
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    void closeReader() {
        if (ends_[0] >= 0) ::close(ends_[0]);
        ends_[0] = -1;
    }
    /// What has been written so far, without waiting.
    std::string read() const {
        std::array<char, 65536> buffer{};
        const auto count = ::read(ends_[0], buffer.data(), buffer.size());
        return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

  private:
    int saved_ = ::dup(STDOUT_FILENO);
    std::array<int, 2> ends_{-1, -1};
};

TEST(ProcessStandardOutputTests, ALineIsOutWhenTheCallReturns) {
    ProcessStandardOutput output;
    const OutputPipe pipe;
    output.print("100 %s %n");
    EXPECT_EQ(pipe.read(), "100 %s %n\n");
}

TEST(ProcessStandardOutputTests, ALongLineIsWholeThoughThePipeTakesItInParts) {
    ProcessStandardOutput output;
    const std::string line(300'000, 'x');
    for (const int flags : {0, O_NONBLOCK}) {
        const OutputPipe pipe(flags);
        std::string received;
        std::thread reader([&] {
            while (received.size() <= line.size())
                received += pipe.read();
        });
        output.print(line);
        reader.join();
        EXPECT_EQ(received, line + "\n");
    }
}

TEST(ProcessStandardOutputTests, AReaderThatIsGoneDoesNoHarmAndTheSignalKeepsItsMeaning) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto printAndRaise = [] {
        (void)std::signal(SIGPIPE, SIG_DFL);
        ProcessStandardOutput output;
        OutputPipe pipe;
        pipe.closeReader();
        output.print("nobody hears this");
        std::fputs("still here", stderr);
        (void)std::raise(SIGPIPE);
    };
    EXPECT_EXIT(printAndRaise(), testing::KilledBySignal(SIGPIPE), "still here");
}

/// The log's socket in a directory tree of this process's own; nothing where that is not allowed.
std::optional<int> openPrivateLog() {
    if (::unshare(CLONE_NEWNS) != 0) return std::nullopt;
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return std::nullopt;
    if (::mount("none", "/dev", "tmpfs", 0, nullptr) != 0) return std::nullopt;
    const int log = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
    if (log < 0) return std::nullopt;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    if (::bind(log, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) return {};
    return log;
}

TEST(SyslogSystemLogTests, WritesTheTextAsItIsAndOnlyToTheLog) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr int kNotAllowed = 77;
    const auto logOnce = [] {
        const auto socket = openPrivateLog();
        if (!socket) std::_Exit(kNotAllowed);
        halvo::SyslogSystemLog log;
        log.write("Halvo: 100 %s %n");
        std::array<char, 1024> received{};
        const auto length = ::recv(*socket, received.data(), received.size(), 0);
        const std::string line(received.data(),
                               static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        ::unlink("/dev/log");
        halvo::SyslogSystemLog silent;
        silent.write("Halvo: nobody hears this");
        // <14> is the facility "user" with the severity "informational".
        const bool right = line.starts_with("<14>") && line.contains(" halvo[") &&
                           line.ends_with(": Halvo: 100 %s %n");
        std::_Exit(right ? 0 : 1);
    };
    const auto succeeded = [](int status) {
        return WIFEXITED(status) &&
               (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == kNotAllowed);
    };
    EXPECT_EXIT(logOnce(), succeeded, "^$");
}

TEST(ApplicationServiceTests, WithoutABusALockKeepsTheSecondInstanceOut) {
    const TemporaryDirectory runtime;
    const std::string variable = "DBUS_SESSION_BUS_ADDRESS";
    const char* value = std::getenv(variable.c_str());
    const std::string bus = value != nullptr ? value : "";
    ::unsetenv(variable.c_str());
    ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);

    halvo::FakeApplication application;
    std::optional<ApplicationService> first(std::in_place, application);
    ApplicationService second(application);
    EXPECT_EQ(first->claim(), ApplicationService::Claim::first);
    EXPECT_EQ(second.claim(), ApplicationService::Claim::alreadyRunning);
    first.reset();
    EXPECT_EQ(second.claim(), ApplicationService::Claim::first);

    for (const char* directory : {"", "/nowhere/at/all"}) {
        ::setenv("XDG_RUNTIME_DIR", directory, 1);
        ApplicationService one(application);
        ApplicationService other(application);
        EXPECT_EQ(one.claim(), ApplicationService::Claim::first) << directory;
        EXPECT_EQ(other.claim(), ApplicationService::Claim::first) << directory;
    }
    ::unsetenv("XDG_RUNTIME_DIR");
    if (!bus.empty()) ::setenv(variable.c_str(), bus.c_str(), 1);
}

TEST(ApplicationServiceTests, ActivationsWaitForWhoeverShowsTheProgram) {
    halvo::FakeApplication application;
    ApplicationService service(application);
    service.Activate({});
    service.Open({"file:///x"}, {});
    int activations = 0;
    service.onActivated([&activations] { ++activations; });
    EXPECT_EQ(activations, 1);
    service.Open({}, {});
    EXPECT_EQ(activations, 2);
    service.ActivateAction("unknown", {}, {});
    EXPECT_EQ(application.terminations, 0);
    service.ActivateAction("quit", {}, {});
    EXPECT_EQ(application.terminations, 1);
}

} // namespace
