#pragma once

#include "MeasurementSession.h"

#include <chrono>
#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace halvo::demo {

/// One run of the application, from its start to its normal quit. One thread.
class ApplicationRun {
  public:
    using Clock = std::chrono::steady_clock;

    /// Starts the application, with more (NAME=VALUE) in its environment, and waits until it has
    /// reported its start as done and clients play into the virtual output; else a sentence with
    /// what the application said.
    static std::expected<std::unique_ptr<ApplicationRun>, std::string>
    start(MeasurementSession& session, const std::vector<std::string>& extra = {});

    /// Asks over the bus for a normal quit; checks that the program ended well and gave the default
    /// output back.
    std::expected<void, std::string> quit();

    int pid() const { return program_->pid(); }
    Clock::time_point startTime() const { return startTime_; }

  private:
    ApplicationRun(MeasurementSession& session, std::unique_ptr<session::SpawnedProgram> program,
                   Clock::time_point startTime)
        : session_(session), program_(std::move(program)), startTime_(startTime) {}
    std::expected<void, std::string> waitUntilReady();
    std::string complaint(const std::string& what) const;

    MeasurementSession& session_;
    std::unique_ptr<session::SpawnedProgram> program_;
    Clock::time_point startTime_;
};

} // namespace halvo::demo
