#include "linux/pipewire/PipeWireConnection.h"

#include "linux/pipewire/ClientConfiguration.h"
#include "linux/pipewire/PipeWireGraph.h"
#include "linux/pipewire/PipeWireHandles.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>
#include <vector>

namespace halvo {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstRetry{250};
constexpr milliseconds kLastRetry{5000};
/// Limit for the wait for a default, which a session without sinks never gets.
constexpr milliseconds kDefaultGrace{1000};
/// Round trips until all existing objects are known: the objects, their parameters, the cards'
/// routes.
constexpr int kRoundTripsToKnow = 3;

struct LoopDeleter {
    void operator()(pw_thread_loop* loop) const { pw_thread_loop_destroy(loop); }
};
struct ContextDeleter {
    void operator()(pw_context* context) const { pw_context_destroy(context); }
};
struct CoreDeleter {
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
};

} // namespace

struct PipeWireConnection::Implementation final : PipeWireObserver {
    std::string server;
    std::unique_ptr<pw_thread_loop, LoopDeleter> threadLoop;
    std::unique_ptr<pw_context, ContextDeleter> context;
    std::unique_ptr<pw_core, CoreDeleter> core;
    PipeWireHook coreHook;
    PipeWireGraph graph{*this};
    spa_source* timer = nullptr;
    std::vector<PipeWireObserver*> observers;

    enum class Phase { away, learning, ready } phase = Phase::away;
    bool lost = false;
    milliseconds retryDelay = kFirstRetry;
    std::uint32_t epoch = 0;
    int learningSequence = 0;
    int learningRound = 0;
    bool graceOver = false;
    int doneSequence = 0;

    bool start();
    void stop();
    void connect();
    void disconnect();
    void lose();
    void arm(milliseconds delay) const;
    void timerExpired();
    void roundTripDone(int sequence);
    void becomeReadyWhenKnown();
    bool isDefaultKnown() const;
    void wake() const { pw_thread_loop_signal(threadLoop.get(), false); }
    static const pw_core_events& coreEvents();

    template <typename Call> void tell(Call call);
    template <typename Call> void tellWhenReady(Call call);
    void devicesChanged() override;
    void defaultsChanged() override;
    void volumeChanged(AudioDeviceID device) override;
    void muteChanged(AudioDeviceID device) override;
    void portChanged() override;
    void streamsChanged() override;
};

bool PipeWireConnection::Implementation::start() {
    const SignalMask mask; // for the threads, too
    // Never undone: the process may have other connections.
    pw_init(nullptr, nullptr);
    threadLoop.reset(pw_thread_loop_new("halvo-server", nullptr));
    if (!threadLoop) return false;
    // The real-time configuration: without it the render thread has no priority.
    auto* properties =
        pw_properties_new(PW_KEY_CONFIG_NAME, realtimeClientConfiguration(), nullptr);
    auto* loop = pw_thread_loop_get_loop(threadLoop.get());
    context.reset(pw_context_new(loop, properties, 0));
    if (!context) return false;
    timer = pw_loop_add_timer(
        loop, [](void* self, std::uint64_t) { static_cast<Implementation*>(self)->timerExpired(); },
        this);
    if (!timer || pw_thread_loop_start(threadLoop.get()) < 0) return false;
    pw_thread_loop_lock(threadLoop.get());
    connect();
    pw_thread_loop_unlock(threadLoop.get());
    return true;
}

void PipeWireConnection::Implementation::stop() {
    if (!threadLoop) return;
    const SignalMask mask;
    pw_thread_loop_stop(threadLoop.get());
    disconnect();
    if (timer) pw_loop_destroy_source(pw_thread_loop_get_loop(threadLoop.get()), timer);
    context.reset();
}

void PipeWireConnection::Implementation::arm(milliseconds delay) const {
    timespec value{};
    value.tv_sec = delay.count() / 1000;
    // Zero would disarm the timer.
    value.tv_nsec = std::max<long>(1, delay.count() % 1000 * 1'000'000);
    pw_loop_update_timer(pw_thread_loop_get_loop(threadLoop.get()), timer, &value, nullptr, false);
}

void PipeWireConnection::Implementation::connect() {
    auto* properties =
        server.empty() ? nullptr : pw_properties_new(PW_KEY_REMOTE_NAME, server.c_str(), nullptr);
    core.reset(pw_context_connect(context.get(), properties, 0));
    if (!core) {
        arm(retryDelay);
        retryDelay = std::min(retryDelay * 2, kLastRetry);
        return;
    }
    phase = Phase::learning;
    learningRound = 0;
    graceOver = false;
    doneSequence = 0;
    pw_core_add_listener(core.get(), coreHook.get(), &coreEvents(), this);
    graph.attach(*core, epoch++);
    learningSequence = pw_core_sync(core.get(), PW_ID_CORE, 0);
    arm(kDefaultGrace);
}

void PipeWireConnection::Implementation::disconnect() {
    if (!core) return;
    phase = Phase::away;
    tell([](PipeWireObserver& observer) { observer.serverDisconnected(); });
    graph.detach();
    coreHook.remove();
    core.reset();
    wake();
}

void PipeWireConnection::Implementation::lose() {
    // The core must not be destroyed inside its own event; the timer does it right after.
    lost = true;
    phase = Phase::away;
    arm(milliseconds(0));
    wake();
}

void PipeWireConnection::Implementation::timerExpired() {
    if (lost) {
        lost = false;
        disconnect();
        arm(retryDelay);
        retryDelay = std::min(retryDelay * 2, kLastRetry);
    } else if (phase == Phase::away) {
        connect();
    } else if (phase == Phase::learning) {
        graceOver = true;
        becomeReadyWhenKnown();
    }
}

const pw_core_events& PipeWireConnection::Implementation::coreEvents() {
    static const pw_core_events events = [] {
        pw_core_events table{};
        table.version = PW_VERSION_CORE_EVENTS;
        table.done = [](void* self, std::uint32_t id, int sequence) {
            if (id == PW_ID_CORE) static_cast<Implementation*>(self)->roundTripDone(sequence);
        };
        table.error = [](void* self, std::uint32_t id, int, int result, const char*) {
            // Errors of single objects do not concern the connection.
            if (id == PW_ID_CORE && result == -EPIPE) static_cast<Implementation*>(self)->lose();
        };
        return table;
    }();
    return events;
}

void PipeWireConnection::Implementation::roundTripDone(int sequence) {
    doneSequence = sequence;
    if (phase == Phase::learning && sequence == learningSequence) {
        if (++learningRound < kRoundTripsToKnow) {
            learningSequence = pw_core_sync(core.get(), PW_ID_CORE, 0);
        } else {
            becomeReadyWhenKnown();
        }
    }
    wake();
}

bool PipeWireConnection::Implementation::isDefaultKnown() const {
    const auto* defaults = graph.defaults();
    const auto name = defaults ? defaults->current() : std::nullopt;
    return name && graph.sinkNamed(*name);
}

void PipeWireConnection::Implementation::becomeReadyWhenKnown() {
    if (phase != Phase::learning || learningRound < kRoundTripsToKnow) return;
    if (!graceOver && !isDefaultKnown()) return;
    phase = Phase::ready;
    retryDelay = kFirstRetry;
    tell([](PipeWireObserver& observer) { observer.serverConnected(); });
    wake();
}

template <typename Call> void PipeWireConnection::Implementation::tell(Call call) {
    const auto current = observers;
    for (auto* observer : current) {
        if (std::ranges::find(observers, observer) != observers.end()) call(*observer);
    }
}

template <typename Call> void PipeWireConnection::Implementation::tellWhenReady(Call call) {
    // Earlier changes are covered by `serverConnected`.
    if (phase == Phase::ready) {
        tell(call);
    } else {
        becomeReadyWhenKnown();
    }
    wake();
}

void PipeWireConnection::Implementation::devicesChanged() {
    tellWhenReady([](PipeWireObserver& observer) { observer.devicesChanged(); });
}

void PipeWireConnection::Implementation::defaultsChanged() {
    tellWhenReady([](PipeWireObserver& observer) { observer.defaultsChanged(); });
}

void PipeWireConnection::Implementation::volumeChanged(AudioDeviceID device) {
    tellWhenReady([device](PipeWireObserver& observer) { observer.volumeChanged(device); });
}

void PipeWireConnection::Implementation::muteChanged(AudioDeviceID device) {
    tellWhenReady([device](PipeWireObserver& observer) { observer.muteChanged(device); });
}

void PipeWireConnection::Implementation::portChanged() {
    tellWhenReady([](PipeWireObserver& observer) { observer.portChanged(); });
}

void PipeWireConnection::Implementation::streamsChanged() {
    tellWhenReady([](PipeWireObserver& observer) { observer.streamsChanged(); });
}

PipeWireConnection::PipeWireConnection(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}

std::unique_ptr<PipeWireConnection> PipeWireConnection::create(const std::string& server) {
    auto implementation = std::make_unique<Implementation>();
    implementation->server = server;
    const bool started = implementation->start();
    std::unique_ptr<PipeWireConnection> connection(
        new PipeWireConnection(std::move(implementation)));
    return started ? std::move(connection) : nullptr;
}

PipeWireConnection::~PipeWireConnection() {
    implementation_->stop();
}

bool PipeWireConnection::waitUntilReady(milliseconds longest) {
    Lock lock(*this);
    return lock.waitFor([this] { return isReady(); }, longest);
}

bool PipeWireConnection::isReady() const {
    return implementation_->phase == Implementation::Phase::ready;
}

pw_core* PipeWireConnection::core() const {
    return implementation_->phase == Implementation::Phase::away ? nullptr
                                                                 : implementation_->core.get();
}

pw_loop* PipeWireConnection::loop() const {
    return pw_thread_loop_get_loop(implementation_->threadLoop.get());
}

pw_data_loop* PipeWireConnection::dataLoop() const {
    return pw_context_get_data_loop(implementation_->context.get());
}

PipeWireGraph& PipeWireConnection::graph() {
    return implementation_->graph;
}

void PipeWireConnection::add(PipeWireObserver& observer) {
    implementation_->observers.push_back(&observer);
}

void PipeWireConnection::remove(PipeWireObserver& observer) {
    std::erase(implementation_->observers, &observer);
}

PipeWireConnection::Lock::Lock(PipeWireConnection& connection) : connection_(connection) {
    pw_thread_loop_lock(connection_.implementation_->threadLoop.get());
}

PipeWireConnection::Lock::~Lock() {
    pw_thread_loop_unlock(connection_.implementation_->threadLoop.get());
}

bool PipeWireConnection::Lock::waitFor(const std::function<bool()>& condition,
                                       milliseconds longest) {
    auto* loop = connection_.implementation_->threadLoop.get();
    timespec deadline{};
    pw_thread_loop_get_time(loop, &deadline, std::chrono::nanoseconds(longest).count());
    while (connection_.core()) {
        if (condition()) return true;
        if (pw_thread_loop_timed_wait_full(loop, &deadline) < 0) break;
    }
    return connection_.core() && condition();
}

bool PipeWireConnection::Lock::roundTrip(milliseconds longest) {
    auto* core = connection_.core();
    if (!core) return false;
    const int sequence = pw_core_sync(core, PW_ID_CORE, 0);
    const auto& state = *connection_.implementation_;
    return waitFor([&] { return state.doneSequence >= sequence; }, longest);
}

} // namespace halvo
