#pragma once

#include "posix/FileDescriptor.h"

#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo::session {

/// How to start a program: its words, its environment, and where its output goes.
struct SpawnRequest {
    enum class Group { own, callers };
    enum class Lifetime { endsWithOwner, independent };

    std::vector<std::string> arguments;   ///< the first is looked up in PATH
    std::vector<std::string> environment; ///< NAME=VALUE, complete; empty: the caller's own
    std::string outputFile = {};          ///< empty: the caller's own standard output
    std::string errorFile = {};           ///< may equal outputFile; empty: the caller's own
    int inputDescriptor = -1;             ///< -1: nothing to read
    Group group = Group::own;             ///< the process group
    Lifetime lifetime = Lifetime::endsWithOwner;
};

/// A program that tests, tools and benchmarks start: with an environment and log files of its own,
/// by default in a process group of its own and killed when the thread that started it ends, which
/// only a fork of one's own can arrange. It has default signal handling. Destroying this ends the
/// group (SIGTERM, SIGKILL after two seconds) and reaps it. One thread at a time.
class SpawnedProgram {
  public:
    using Milliseconds = std::chrono::milliseconds;

    /// Starts the program; a text that says what failed when it cannot be executed.
    static std::expected<std::unique_ptr<SpawnedProgram>, std::string> start(SpawnRequest request);
    /// What a program that succeeded has said and taken.
    struct Completed {
        std::string output;    ///< both streams
        double cpuSeconds = 0; ///< user and system time, its children's too
    };
    /// Runs a program to its end, both its streams kept in the file `log`; a sentence with the last
    /// line that it said when it fails.
    static std::expected<Completed, std::string> run(const std::vector<std::string>& arguments,
                                                     const std::string& log);
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
    SpawnedProgram(int pid, FileDescriptor process, SpawnRequest request);
    /// Waits for the end without reaping; false when the deadline passed first.
    bool hasEnded(Milliseconds deadline) const;

    int pid_;
    FileDescriptor process_;
    std::optional<int> status_;
    double cpuSeconds_ = 0; ///< once it is reaped
    SpawnRequest request_;
};

} // namespace halvo::session
