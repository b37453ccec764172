#pragma once

#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo::session {

/// How to start a program: its words, the whole environment, and where its output goes.
struct SpawnRequest {
    enum class Group { own, callers };
    enum class Lifetime { endsWithOwner, independent };

    std::vector<std::string> arguments;   ///< the first is looked up in PATH
    std::vector<std::string> environment; ///< NAME=VALUE, complete
    std::string outputFile = {};          ///< empty: the caller's own standard output
    std::string errorFile = {};           ///< may equal outputFile; empty: the caller's own
    int inputDescriptor = -1;             ///< -1: nothing to read
    Group group = Group::own;             ///< the process group
    Lifetime lifetime = Lifetime::endsWithOwner;
};

/// A program started with default signal handling; by default in a process group of its own, and
/// killed when the thread that started it ends. Destroying this ends the group (SIGTERM, SIGKILL
/// after two seconds) and reaps it. One thread at a time.
class SpawnedProgram {
  public:
    using Milliseconds = std::chrono::milliseconds;

    /// Starts the program; a text that says what failed when it cannot be executed.
    static std::expected<std::unique_ptr<SpawnedProgram>, std::string> start(SpawnRequest request);
    ~SpawnedProgram();
    SpawnedProgram(const SpawnedProgram&) = delete;
    SpawnedProgram& operator=(const SpawnedProgram&) = delete;

    int pid() const { return pid_; }
    bool isRunning();
    /// Sends a signal to the program alone; false when it has ended.
    bool signal(int number);
    /// The exit status, 128 + n after signal n, or nothing when the deadline passed first.
    std::optional<int> wait(Milliseconds deadline);
    /// Ends the whole group and reaps the program.
    void end();

    /// What has been written to the two files so far; empty when they are the caller's own.
    std::string standardOutput() const;
    std::string standardError() const;

  private:
    SpawnedProgram(int pid, int processDescriptor, SpawnRequest request);

    int pid_;
    int processDescriptor_;
    std::optional<int> status_;
    SpawnRequest request_;
};

} // namespace halvo::session
