#include "linux/process/LinuxSessionGuard.h"

#include "linux/files/HelperProgram.h"
#include "platform/SystemLog.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr const char* kProgram = "halvo-session-guard";
constexpr const char* kVariable = "HALVO_SESSION_GUARD";
constexpr MainQueue::Duration kFirstDelay = 1s;
constexpr MainQueue::Duration kLongestDelay = 60s;

} // namespace

LinuxSessionGuard::LinuxSessionGuard(MainQueue& queue, SystemLog& log,
                                     const std::filesystem::path& directory)
    : queue_(queue), log_(log), delay_(kFirstDelay) {
    const char* other = std::getenv(kVariable);
    program_ = other != nullptr ? other : helperProgram(directory, kProgram);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return; // runs without a guard
    readEnd_ = FileDescriptor(ends[0]);
    writeEnd_ = FileDescriptor(ends[1]);
}

LinuxSessionGuard::~LinuxSessionGuard() {
    dismiss();
}

void LinuxSessionGuard::watch() {
    if (!std::exchange(isWatched_, true)) start();
}

void LinuxSessionGuard::dismiss() const {
    (void)writeAll(writeEnd_.get(), "."); // the pipe has room; without a pipe there is no guard
}

void LinuxSessionGuard::start() {
    if (program_.empty() || !readEnd_) return;
    auto child = SpawnedChild::start({program_.string(), {}}, SpawnedChild::Output::discarded,
                                     {readEnd_.get(), SpawnedChild::Session::own});
    if (!child) {
        log_.write("Halvo: The session guard cannot be started: " + child.error());
        return;
    }
    child_ = std::move(*child);
    notifier_ =
        std::make_unique<QSocketNotifier>(child_->processDescriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { ended(); });
}

void LinuxSessionGuard::ended() {
    if (!child_ || !child_->wait(0ms)) return;
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater(); // it is emitting this signal
    child_.reset();
    queue_.after(delay_, [this, alive = lifetime_.watch()] {
        if (!alive.expired()) start();
    });
    delay_ = std::min(delay_ * 2, kLongestDelay);
}

} // namespace halvo
