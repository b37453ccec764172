#pragma once

#include "session/SpawnedProgram.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo::session {

class ServerView;

/// A simulated stereo output. Its monitor is after the volume, as the ear at a real device is.
struct SimulatedOutput {
    std::string nodeName;
    std::string description;
    std::vector<float> volumes{1.0F, 1.0F}; ///< linear amplitude per channel
    /// Whether the session manager may keep its level. WirePlumber 0.5 then begins with its own
    /// stored one, or 1.0, instead of `volumes`; 0.4 always keeps it.
    bool isRemembered = false;
};

/// `count` outputs: "Speakers" (acc.a), "Headphones" (acc.b), "Output 3" (acc.c) and so on.
std::vector<SimulatedOutput> simulatedOutputs(std::size_t count);

struct Options {
    std::uint32_t rate = 48000;   ///< frames per second
    std::uint32_t quantum = 1024; ///< frames per cycle, fixed
    std::vector<SimulatedOutput> outputs = simulatedOutputs(2);
    /// The output that the session manager prefers; empty: the first one. No default is configured.
    std::string defaultOutput;
    bool withBus = true;    ///< a session bus of its own; without it there is no bus at all
    bool withPulse = false; ///< also the PulseAudio-compatible server
};

struct RunResult {
    int status = -1; ///< exit status, 128 + n after signal n, -1: not started or over the deadline
    std::string output; ///< standard output and standard error, together
};

/// A sound server, session manager and session bus of its own, with its own home and configuration
/// directories, for tests and the demonstration. It leaves nothing behind, even when its owner is
/// killed. The programs end with the thread that called `create`; use it from that thread.
class PrivateSession {
  public:
    using Milliseconds = std::chrono::milliseconds;
    static constexpr Milliseconds kPatience{10000};

    /// Returns when the default output is known (with no outputs: when the session manager is up).
    static std::expected<std::unique_ptr<PrivateSession>, std::string> create(Options options = {});
    ~PrivateSession();
    PrivateSession(const PrivateSession&) = delete;
    PrivateSession& operator=(const PrivateSession&) = delete;

    /// The complete environment of a program inside, NAME=VALUE.
    const std::vector<std::string>& environment() const { return environment_; }
    /// Sets the environment of this process, before other threads read it.
    void setEnvironmentOfThisProcess() const;
    /// The temporary directory that holds all files of the session; removed with it.
    const std::string& directory() const { return directory_; }
    /// The ring's name (HALVO_RING_NAME), unique to the session.
    const std::string& ringName() const { return ringName_; }
    /// The sound server's socket.
    std::string serverSocket() const;
    const Options& options() const { return options_; }

    /// Starts a program inside, its output captured in files; `extra` (NAME=VALUE) wins.
    std::expected<std::unique_ptr<SpawnedProgram>, std::string>
    spawn(const std::vector<std::string>& arguments, const std::vector<std::string>& extra = {});
    /// Runs a program inside to its end.
    RunResult run(const std::vector<std::string>& arguments, Milliseconds deadline = kPatience);

    /// Adds or removes an output; true when the server shows it with its ports, or no longer. As
    /// real hardware, it is still there after the server restarts.
    bool plug(const SimulatedOutput& output);
    bool unplug(const std::string& nodeName);

    /// Ends, or starts again, the server with its session manager; the bus stays.
    void stopServer();
    /// Kills the server alone, as a crash would; call `stopServer` before `startServer`.
    void killServer();
    bool isServerRunning() { return server_ && server_->isRunning(); }
    bool startServer();

    /// Configures the default output; true when it is in effect.
    bool setDefault(const std::string& nodeName);
    /// The default output in effect; empty when there is none.
    std::string defaultSink() const;
    /// The configured default output; nothing when the key is absent.
    std::optional<std::string> configuredDefault() const;

    /// Linear amplitude per channel; empty when there is no such node.
    std::vector<float> volume(const std::string& nodeName) const;
    bool isMuted(const std::string& nodeName) const;
    /// True when the server shows the new value.
    bool setVolume(const std::string& nodeName, const std::vector<float>& volumes);
    bool setMuted(const std::string& nodeName, bool muted);
    /// Plays a little silence into the sink: one that has never run keeps what is set, but the
    /// server shows nobody the change.
    bool wake(const std::string& nodeName) const;
    /// The names of all nodes of the server, one entry per node, in its order.
    std::vector<std::string> nodeNames() const;

    /// Polls until the condition holds; false when the deadline passed first.
    static bool waitFor(const std::function<bool()>& condition, Milliseconds deadline = kPatience);

  private:
    explicit PrivateSession(Options options);

    std::optional<std::string> prepareDirectory();
    std::optional<std::string> startBus();
    std::optional<std::string> startAll();
    std::optional<std::string> launch(std::unique_ptr<SpawnedProgram>& slot,
                                      const std::string& program,
                                      const std::vector<std::string>& arguments);
    bool hasNodeWithPorts(const std::string& nodeName) const;

    Options options_;
    std::string directory_;
    std::string ringName_;
    std::vector<std::string> environment_;
    std::size_t spawned_ = 0;
    std::unique_ptr<class SessionDirectory> ownDirectory_;
    std::unique_ptr<SpawnedProgram> bus_;
    std::unique_ptr<SpawnedProgram> server_;
    std::unique_ptr<SpawnedProgram> manager_;
    std::unique_ptr<SpawnedProgram> pulse_;
    std::unique_ptr<ServerView> view_;
};

} // namespace halvo::session
