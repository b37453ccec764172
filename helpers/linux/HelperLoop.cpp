#include "HelperLoop.h"

#include "Cover.h"

#include <algorithm>
#include <cstdlib>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace halvo::helper {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstPause{250};
constexpr milliseconds kLongestPause{5000};
constexpr std::uint64_t kAccuracy = 1000; ///< microseconds

Track trackOf(const Player* player) {
    if (player == nullptr) return {};
    const auto& told = player->metadata;
    return {told.title, told.artist, told.album, player->identifier, told.lengthMicros.value_or(0)};
}

} // namespace

std::unique_ptr<HelperLoop> HelperLoop::create() {
    sd_event* event = nullptr;
    if (sd_event_new(&event) < 0) return nullptr;
    return std::unique_ptr<HelperLoop>(new HelperLoop(Event(event)));
}

HelperLoop::HelperLoop(Event event)
    : event_(std::move(event)), look_(makeTimer(&HelperLoop::onLook)),
      reconnect_(makeTimer(&HelperLoop::onReconnect)), pause_(kFirstPause),
      fetcher_(event_.get(),
               [this](const std::string& url, const std::string& bytes) {
                   announcer_.takeCover(url, base64Of(bytes), now());
                   goOn();
               }),
      writer_(event_.get(), [this] { goOn(); }) {}

EventSource HelperLoop::makeTimer(sd_event_time_handler_t handler) {
    sd_event_source* source = nullptr;
    (void)sd_event_add_time(event_.get(), &source, CLOCK_MONOTONIC, 0, kAccuracy, handler, this);
    if (source != nullptr) (void)sd_event_source_set_enabled(source, SD_EVENT_OFF);
    return EventSource(source);
}

void HelperLoop::arm(EventSource& timer, Announcer::Time at) {
    (void)sd_event_source_set_time(timer.get(), static_cast<std::uint64_t>(at.count()));
    (void)sd_event_source_set_enabled(timer.get(), SD_EVENT_ONESHOT);
}

Announcer::Time HelperLoop::now() const {
    std::uint64_t time = 0;
    (void)sd_event_now(event_.get(), CLOCK_MONOTONIC, &time); // a running loop knows it
    return Announcer::Time(static_cast<std::int64_t>(time));
}

/// The writer notices a closed pipe; this is for any other output.
bool HelperLoop::watchParent() {
    parent_ = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, ::getppid(), 0)));
    if (!parent_) return false; // outside of our PID namespace, or just ended
    sd_event_source* source = nullptr;
    const auto end = [](sd_event_source* parent, int, std::uint32_t, void*) {
        return sd_event_exit(sd_event_source_get_event(parent), EXIT_SUCCESS);
    };
    const int added = sd_event_add_io(event_.get(), &source, parent_.get(), EPOLLIN, end, nullptr);
    parentEnded_.reset(source);
    return added >= 0;
}

int HelperLoop::run() {
    if (!look_ || !reconnect_) return EXIT_FAILURE;
    (void)watchParent();
    connect();
    playersChanged();
    return sd_event_loop(event_.get()) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

void HelperLoop::connect() {
    PlayerWatch::Handlers handlers;
    handlers.onAppeared = [this](const std::string& name) {
        pause_ = kFirstPause;
        players_.add(name);
    };
    handlers.onGone = [this](const std::string& name) {
        players_.remove(name);
        playersChanged();
    };
    handlers.onTold = [this](const std::string& name, mpris::PlayerProperties properties) {
        players_.apply(name, std::move(properties));
        playersChanged();
    };
    handlers.onDisconnected = [this] { disconnect(); };
    handlers.shownPlayer = [this] {
        const auto* player = players_.best();
        return player != nullptr ? player->busName : std::string();
    };
    watch_ = PlayerWatch::connect(event_.get(), std::move(handlers));
    if (!watch_) disconnect();
}

/// The watch itself is destroyed when the next one is made: it may be the caller.
void HelperLoop::disconnect() {
    arm(reconnect_, now() + pause_);
    pause_ = std::min<Announcer::Time>(pause_ * 2, kLongestPause);
    players_.clear();
    playersChanged();
}

int HelperLoop::onReconnect(sd_event_source* /*source*/, std::uint64_t /*time*/, void* data) {
    auto& self = *static_cast<HelperLoop*>(data);
    self.watch_.reset();
    self.connect();
    return 0;
}

void HelperLoop::playersChanged() {
    const auto* player = players_.best();
    const bool isPlaying = player != nullptr && player->status == mpris::PlaybackStatus::playing;
    announcer_.follow(trackOf(player), isPlaying,
                      player != nullptr ? player->metadata.artURL : std::string(), now());
    goOn();
}

int HelperLoop::onLook(sd_event_source* /*source*/, std::uint64_t /*time*/, void* data) {
    static_cast<HelperLoop*>(data)->goOn();
    return 0;
}

void HelperLoop::goOn() {
    if (const auto url = announcer_.coverToFetch(now())) fetcher_.fetch(*url);
    if (!writer_.isIdle()) return; // it calls back when the line is written
    if (const auto payload = announcer_.lineToWrite(now())) {
        if (!writer_.write(lineFor(*payload))) (void)sd_event_exit(event_.get(), EXIT_SUCCESS);
    }
    if (const auto next = announcer_.wake()) {
        arm(look_, *next);
    } else {
        (void)sd_event_source_set_enabled(look_.get(), SD_EVENT_OFF);
    }
}

} // namespace halvo::helper
