#pragma once

#include "platform/BackgroundQueue.h"
#include "platform/ChildProcess.h"
#include "platform/HTTPSession.h"
#include "platform/ScriptRunner.h"
#include "platform/fake/CallLog.h"

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace halvo {

/// Background work that runs on the test's thread when the test says so.
class FakeBackgroundQueue final : public BackgroundQueue {
  public:
    void async(std::function<void()> work) override { queued_.push_back(std::move(work)); }
    /// Runs everything, also what that work queues.
    void flush();

  private:
    std::deque<std::function<void()>> queued_;
};

/// Requests that wait for the test's answer, oldest first.
class FakeHTTPSession final : public HTTPSession {
  public:
    void get(const HTTPRequest& request, Completion completion) override;
    void answer(std::optional<HTTPResponse> response);

    std::vector<HTTPRequest> requests; ///< all that were ever made

  private:
    std::deque<Completion> waiting_;
};

/// Helpers that say and do what the test makes them.
class FakeChildProcessLauncher final : public ChildProcessLauncher {
  public:
    explicit FakeChildProcessLauncher(CallLog& log) : log_(log) {}

    std::unique_ptr<ChildProcess> launch(const std::string& program,
                                         const std::vector<std::string>& arguments,
                                         OnOutput onOutput, OnExit onExit) override;

    /// The latest helper that was launched writes, or ends.
    void say(const std::string& bytes);
    void exit(int status);
    bool isRunning() const { return isRunning_; }

    bool launchFails = false;

  private:
    class Process;

    CallLog& log_;
    OnOutput onOutput_;
    OnExit onExit_;
    bool isRunning_ = false;
};

/// Scripts with prepared answers; one without gives nothing.
class FakeScriptRunner final : public ScriptRunner {
  public:
    std::optional<std::string> run(const std::string& source) override;

    std::map<std::string, std::string> answers; ///< by source
    std::vector<std::string> sources;           ///< all that were run
};

} // namespace halvo
