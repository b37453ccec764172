#include "helpers/macos/NowPlayingLoop.h"

#include "posix/FileDescriptor.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace halvo::helper {

namespace {

Announcer::Time now() {
    using namespace std::chrono;
    return duration_cast<Announcer::Time>(steady_clock::now().time_since_epoch());
}

} // namespace

NowPlayingLoop::NowPlayingLoop(MediaRemote& remote)
    : remote_(remote), queue_(dispatch_queue_create("org.halvo.media-helper", nullptr)) {}

void NowPlayingLoop::run() {
    (void)std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is told by the write
    watchParent();
    remote_.observe(queue_, [this] { lookSoon(); });
    dispatch_async(queue_, ^{
      announcer_.follow({}, false, {}, now()); // said soon even if the system never answers
      lookSoon();
      goOn();
    });
    dispatch_main();
}

void NowPlayingLoop::watchParent() {
    const pid_t parent = ::getppid();
    parent_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_PROC, static_cast<uintptr_t>(parent),
                                     DISPATCH_PROC_EXIT, queue_);
    dispatch_source_set_event_handler(parent_, ^{
      std::_Exit(EXIT_SUCCESS);
    });
    dispatch_resume(parent_);
    if (::getppid() != parent) std::_Exit(EXIT_SUCCESS); // it ended before it was watched
}

/// Notifications come in clusters: one question for those that are waiting.
void NowPlayingLoop::lookSoon() {
    if (isLookDue_) return;
    isLookDue_ = true;
    dispatch_async(queue_, ^{
      isLookDue_ = false;
      remote_.ask(queue_, [this](const MediaRemote::State& state) {
          announcer_.follow(state.track, state.isPlaying, state.artURL, now());
          goOn();
      });
    });
}

void NowPlayingLoop::goOn() {
    if (const auto payload = announcer_.lineToWrite(now())) {
        if (!writeAll(STDOUT_FILENO, lineFor(*payload))) std::_Exit(EXIT_SUCCESS);
    }
    const auto next = announcer_.wake();
    if (!next) return;
    const auto delay = std::chrono::nanoseconds(*next - now()).count();
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay > 0 ? delay : 0), queue_, ^{
      goOn();
    });
}

} // namespace halvo::helper
