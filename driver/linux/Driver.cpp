#include "driver/linux/Driver.h"

#include "linux/pipewire/ClientConfiguration.h"
#include "posix/RingName.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

namespace halvo::driver {

namespace {

using Milliseconds = Driver::Milliseconds;

constexpr Milliseconds kFirstBackOff{250};
constexpr Milliseconds kLongestBackOff{5000};
// The session manager needs a moment between announcing a sink and linking to it.
constexpr Milliseconds kCaptureRetry{100};
constexpr std::time_t kCheckSeconds = 1;

void say(const char* text, const std::string& detail = "") {
    std::fprintf(stderr, "halvo-audio-device: %s%s%s\n", text, detail.empty() ? "" : ": ",
                 detail.c_str());
}

} // namespace

Driver::Driver(pid_t supervisor) : supervisor_(supervisor), backOff_(kFirstBackOff) {
    pw_init(nullptr, nullptr);
}

Driver::~Driver() {
    disconnect();
    if (context_ != nullptr) pw_context_destroy(context_);
    supervisorWatch_.reset();
    if (mainLoop_ != nullptr) pw_main_loop_destroy(mainLoop_);
    pw_deinit();
}

int Driver::run() {
    if (!openRing()) return status_ != 0 ? status_ : kFailed;
    mainLoop_ = pw_main_loop_new(nullptr);
    if (mainLoop_ == nullptr) return kFailed;
    loop_ = pw_main_loop_get_loop(mainLoop_);
    // Before the data thread exists: it inherits the blocked signals.
    pw_loop_add_signal(loop_, SIGTERM, onSignal, this);
    pw_loop_add_signal(loop_, SIGINT, onSignal, this);
    reconcileTimer_ = pw_loop_add_timer(loop_, onReconcile, this);
    checkTimer_ = pw_loop_add_timer(loop_, onCheck, this);
    // Real-time priority for the data thread comes with this configuration only.
    context_ = pw_context_new(
        loop_, pw_properties_new(PW_KEY_CONFIG_NAME, realtimeClientConfiguration(), nullptr), 0);
    if (context_ == nullptr) {
        say("the sound system's client configuration cannot be used");
        return kFailed;
    }
    if (supervisor_ != 0) supervisorWatch_.emplace(loop_, supervisor_);
    reconcile();
    pw_main_loop_run(mainLoop_);
    return status_;
}

bool Driver::openRing() {
    const std::string name = ringName();
    auto ring = RingWriter::open(name);
    if (ring) {
        ring_ = std::move(*ring);
        saidNoRing_ = false;
        return true;
    }
    if (ring.error().reason == RingFailure::Reason::alreadyRunning) {
        say("a second driver is not needed, one is running already", name);
        finish(kNotNeeded);
    } else if (!saidNoRing_) {
        say("the ring cannot be created", name + ": " + ring.error().detail);
        saidNoRing_ = true;
    }
    return false;
}

void Driver::checkRing() {
    if (ring_ && ring_->isCurrent() && ring_->name() == ringName()) return;
    // The lock is this process's own; it must go before the object is opened again.
    capture_.reset();
    ring_.reset();
    if (openRing()) reconcileIn(Milliseconds{0});
}

bool Driver::connectToServer() {
    static const pw_core_events coreEvents = [] {
        pw_core_events result{};
        result.version = PW_VERSION_CORE_EVENTS;
        result.done = onDone;
        result.error = onError;
        return result;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events result{};
        result.version = PW_VERSION_REGISTRY_EVENTS;
        result.global = onGlobal;
        result.global_remove = onGlobalRemove;
        return result;
    }();
    core_ = pw_context_connect(context_, nullptr, 0);
    if (core_ == nullptr) return false;
    lost_ = false;
    captureEnded_ = false;
    clock_.emplace([this] { reconcileIn(Milliseconds{0}); });
    sink_.emplace([this] { reconcileIn(Milliseconds{0}); });
    cycleOrderLink_.emplace(core_);
    pw_core_add_listener(core_, &coreListener_, &coreEvents, this);
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(registry_, &registryListener_, &registryEvents, this);
    // One round for the list of objects, one for the settings that it leads to.
    syncsLeft_ = 2;
    pendingSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
    return true;
}

void Driver::disconnect() {
    capture_.reset();
    cycleOrderLink_.reset();
    sink_.reset();
    clock_.reset();
    if (registry_ != nullptr) {
        spa_hook_remove(&registryListener_);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
        registry_ = nullptr;
    }
    if (core_ != nullptr) {
        spa_hook_remove(&coreListener_);
        pw_core_disconnect(core_);
        core_ = nullptr;
    }
}

void Driver::serverIsMissing() {
    if (supervisor_ != 0 && backOff_ == kLongestBackOff)
        return finish(0); // the next starts its own
    if (!saidNoServer_) say("no sound server can be reached; trying again");
    saidNoServer_ = true;
    retryLater();
}

void Driver::retryLater() {
    reconcileIn(backOff_);
    backOff_ = std::min(backOff_ * 2, kLongestBackOff);
}

void Driver::reconcileIn(Milliseconds delay) {
    // Never at once: this is called from within events of the objects that reconciling may destroy.
    const auto nanoseconds = std::max<std::chrono::nanoseconds>(delay, std::chrono::nanoseconds{1});
    timespec value{};
    value.tv_sec = nanoseconds.count() / std::nano::den;
    value.tv_nsec = nanoseconds.count() % std::nano::den;
    pw_loop_update_timer(loop_, reconcileTimer_, &value, nullptr, false);
}

void Driver::reconcile() {
    if (lost_) {
        disconnect();
        lost_ = false;
    }
    if (core_ == nullptr) {
        if (connectToServer()) return;
        serverIsMissing();
        return;
    }
    if (syncsLeft_ > 0) return;
    sink_->ensure(core_);
    updateCapture();
}

void Driver::updateCapture() {
    const std::uint32_t rate = clock_->framesPerSecond();
    if (captureEnded_ || !sink_->isPresent() || !ring_ || (capture_ && capture_->rate() != rate)) {
        capture_.reset();
        captureEnded_ = false;
    }
    if (capture_ || !sink_->isPresent() || !ring_) return;
    ring_->publish(rate);
    capture_.emplace(core_, *ring_, *cycleOrderLink_, rate,
                     [this](CaptureStream::State state) { captureChanged(state); });
}

void Driver::captureChanged(CaptureStream::State state) {
    if (state == CaptureStream::State::ended) {
        captureEnded_ = true;
        reconcileIn(kCaptureRetry);
    }
    checkRingWhile(state == CaptureStream::State::awake);
}

void Driver::checkRingWhile(bool needed) {
    // At once, and then every second: nobody may have looked for long. Not while nobody plays, so
    // that nothing wakes then.
    timespec first{0, needed ? 1 : 0};
    timespec period{needed ? kCheckSeconds : 0, 0};
    pw_loop_update_timer(loop_, checkTimer_, &first, &period, false);
}

void Driver::finish(int status) {
    status_ = status;
    if (mainLoop_ != nullptr) pw_main_loop_quit(mainLoop_);
}

void Driver::onSignal(void* data, int) {
    static_cast<Driver*>(data)->finish(0);
}

void Driver::onReconcile(void* data, std::uint64_t) {
    static_cast<Driver*>(data)->reconcile();
}

void Driver::onCheck(void* data, std::uint64_t) {
    static_cast<Driver*>(data)->checkRing();
}

void Driver::onDone(void* data, std::uint32_t id, int sequence) {
    auto* self = static_cast<Driver*>(data);
    if (id != PW_ID_CORE || sequence != self->pendingSync_ || self->syncsLeft_ == 0) return;
    if (--self->syncsLeft_ > 0) {
        self->pendingSync_ = pw_core_sync(self->core_, PW_ID_CORE, 0);
        return;
    }
    self->saidNoServer_ = false;
    self->backOff_ = kFirstBackOff;
    self->reconcileIn(Milliseconds{0});
}

void Driver::onError(void* data, std::uint32_t id, int, int result, const char* message) {
    auto* self = static_cast<Driver*>(data);
    if (id == PW_ID_CORE && result == -EPIPE) {
        if (self->supervisor_ != 0) return self->finish(0);
        say("the sound server went away; waiting for it");
        self->saidNoServer_ = true;
        self->lost_ = true;
        self->retryLater();
    } else if (self->sink_ && self->sink_->isRequest(id)) {
        say("the sound server refuses the virtual device", message != nullptr ? message : "");
        self->sink_->requestFailed();
        self->retryLater();
    } else if (self->cycleOrderLink_) {
        self->cycleOrderLink_->refused(id);
    }
}

void Driver::onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                      const spa_dict* properties) {
    auto* self = static_cast<Driver*>(data);
    if (properties == nullptr) return;
    self->sink_->consider(id, type, properties);
    self->clock_->consider(self->registry_, id, type, properties);
    self->cycleOrderLink_->consider(id, type, properties);
}

void Driver::onGlobalRemove(void* data, std::uint32_t id) {
    auto* self = static_cast<Driver*>(data);
    self->sink_->forget(id);
    self->cycleOrderLink_->forget(id);
}

} // namespace halvo::driver
