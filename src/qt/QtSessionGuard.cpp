#include "qt/QtSessionGuard.h"

#include "platform/SystemLog.h"
#include "posix/ProcessSpawn.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr const char* kVariable = "HALVO_SESSION_GUARD";
constexpr MainQueue::Duration kFirstDelay = 1s;
constexpr MainQueue::Duration kLongestDelay = 60s;

} // namespace

QtSessionGuard::QtSessionGuard(MainQueue& queue, SystemLog& log, std::filesystem::path program)
    : queue_(queue), log_(log), program_(std::move(program)), delay_(kFirstDelay) {
    if (const char* other = std::getenv(kVariable)) program_ = other;
    auto ends = makePipe();
    if (!ends) return; // runs without a guard
    readEnd_ = std::move(ends->first);
    writeEnd_ = std::move(ends->second);
}

QtSessionGuard::~QtSessionGuard() {
    dismiss();
}

void QtSessionGuard::watch() {
    if (!std::exchange(isWatched_, true)) start();
}

void QtSessionGuard::dismiss() const {
    (void)writeAll(writeEnd_.get(), "."); // the pipe has room; without a pipe there is no guard
}

void QtSessionGuard::start() {
    if (program_.empty() || !readEnd_) return;
    auto ends = makePipe();
    const auto child =
        ends ? ProcessSpawn::start({program_.string(), {}},
                                   {readEnd_.get(), ends->second.get(), ProcessSpawn::Session::own})
             : std::unexpected(std::string("no descriptor is left"));
    if (!child) {
        log_.write("Halvo: The session guard cannot be started: " + child.error());
        return;
    }
    child_ = *child;
    output_ = std::move(ends->first);
    notifier_ = std::make_unique<QSocketNotifier>(output_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { ended(); });
}

void QtSessionGuard::ended() {
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater(); // it is emitting this signal
    (void)output_.close();              // nothing was written
    replaceLater();
}

void QtSessionGuard::replaceLater() {
    queue_.after(delay_, [this, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        if (ProcessSpawn::reap(child_)) {
            start();
        } else {
            replaceLater(); // only its output has ended
        }
    });
    delay_ = std::min(delay_ * 2, kLongestDelay);
}

} // namespace halvo
