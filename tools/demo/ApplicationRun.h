#pragma once

#include "Stage.h"

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

    /// Starts the application, with more (NAME=VALUE) in its environment; `waitUntilReady` tells
    /// when sound can flow.
    static std::expected<std::unique_ptr<ApplicationRun>, std::string>
    start(Stage& stage, const std::vector<std::string>& extra = {});

    /// Until the application has reported its start as done and clients play into the virtual
    /// output; else a sentence with what the application said.
    std::expected<void, std::string> waitUntilReady();
    /// Asks over the bus for a normal quit; checks that the program ended well and gave the default
    /// output back.
    std::expected<void, std::string> quit();

    int pid() const { return program_->pid(); }
    Clock::time_point startTime() const { return startTime_; }

  private:
    ApplicationRun(Stage& stage, std::unique_ptr<session::SpawnedProgram> program,
                   Clock::time_point startTime)
        : stage_(stage), program_(std::move(program)), startTime_(startTime) {}
    std::string complaint(const std::string& what) const;

    Stage& stage_;
    std::unique_ptr<session::SpawnedProgram> program_;
    Clock::time_point startTime_;
};

} // namespace halvo::demo
