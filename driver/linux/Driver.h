#pragma once

#include "driver/RingWriter.h"
#include "driver/linux/CaptureStream.h"
#include "driver/linux/ClockRate.h"
#include "driver/linux/CycleOrderLink.h"
#include "driver/linux/SupervisorWatch.h"
#include "driver/linux/VirtualSink.h"

#include <chrono>
#include <memory>
#include <optional>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// Keeps ring, virtual sink and capture stream together through every coming and going of the
/// sound server. One thread, the main loop's; it reconciles what is with what should be whenever
/// something changes.
class Driver {
  public:
    using Milliseconds = std::chrono::milliseconds;

    static constexpr int kFailed = 1;    ///< exit status: another attempt may succeed
    static constexpr int kNotNeeded = 2; ///< exit status: another driver writes the ring

    /// `supervisor`: the process that restarts this one when it dies, or 0. A supervised driver
    /// ends when the sound server goes away; another one waits for the next server.
    explicit Driver(pid_t supervisor = 0);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Runs until SIGTERM or SIGINT, or what is said above; the exit status.
    int run();

  private:
    bool openRing();
    void checkRing();
    bool connectToServer();
    void disconnect();
    void serverIsMissing();
    void retryLater();
    void reconcileIn(Milliseconds delay);
    void reconcile();
    void updateCapture();
    void captureChanged(CaptureStream::State state);
    void checkRingWhile(bool needed);
    void finish(int status);

    static void onSignal(void* data, int number);
    static void onReconcile(void* data, std::uint64_t expirations);
    static void onCheck(void* data, std::uint64_t expirations);
    static void onDone(void* data, std::uint32_t id, int sequence);
    static void onError(void* data, std::uint32_t id, int sequence, int result,
                        const char* message);
    static void onGlobal(void* data, std::uint32_t id, std::uint32_t permissions, const char* type,
                         std::uint32_t version, const spa_dict* properties);
    static void onGlobalRemove(void* data, std::uint32_t id);

    const pid_t supervisor_;
    pw_main_loop* mainLoop_ = nullptr;
    pw_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    spa_source* reconcileTimer_ = nullptr;
    spa_source* checkTimer_ = nullptr;
    std::optional<SupervisorWatch> supervisorWatch_;
    int status_ = 0;
    bool saidNoServer_ = false;
    bool saidNoRing_ = false;
    Milliseconds backOff_;

    // One connection to the server.
    pw_core* core_ = nullptr;
    pw_registry* registry_ = nullptr;
    spa_hook coreListener_{};
    spa_hook registryListener_{};
    int pendingSync_ = 0;
    int syncsLeft_ = 0;
    bool lost_ = false;
    bool captureEnded_ = false;
    std::optional<ClockRate> clock_;
    std::optional<VirtualSink> sink_;
    std::optional<CycleOrderLink> cycleOrderLink_;

    std::unique_ptr<RingWriter> ring_;
    std::optional<CaptureStream> capture_; // uses the ring, so it goes first
};

} // namespace halvo::driver
