#include "platform/fake/FakeProcesses.h"

namespace halvo {

void FakeBackgroundQueue::flush() {
    while (!queued_.empty()) {
        const auto work = std::move(queued_.front());
        queued_.pop_front();
        work();
    }
}

void FakeHTTPSession::get(const HTTPRequest& request, Completion completion) {
    requests.push_back(request);
    waiting_.push_back(std::move(completion));
}

void FakeHTTPSession::answer(std::optional<HTTPResponse> response) {
    const auto completion = std::move(waiting_.front());
    waiting_.pop_front();
    completion(std::move(response));
}

/// Ends with its owner, as a real one does.
class FakeChildProcessLauncher::Process final : public ChildProcess {
  public:
    explicit Process(FakeChildProcessLauncher& launcher) : launcher_(launcher) {}
    ~Process() override { end(); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool isRunning() const override { return launcher_.isRunning_; }
    void terminate() override { end(); }

  private:
    void end() {
        if (std::exchange(launcher_.isRunning_, false)) launcher_.log_.add("terminate helper");
    }

    FakeChildProcessLauncher& launcher_;
};

std::unique_ptr<ChildProcess>
FakeChildProcessLauncher::launch(const std::string& program,
                                 const std::vector<std::string>& arguments, OnOutput onOutput,
                                 OnExit onExit) {
    std::string call = "launch " + program;
    for (const auto& argument : arguments)
        call += " " + argument;
    log_.add(std::move(call));
    if (launchFails) return nullptr;
    onOutput_ = std::move(onOutput);
    onExit_ = std::move(onExit);
    isRunning_ = true;
    return std::make_unique<Process>(*this);
}

void FakeChildProcessLauncher::say(const std::string& bytes) {
    if (isRunning_) onOutput_(bytes);
}

void FakeChildProcessLauncher::exit(int status) {
    if (std::exchange(isRunning_, false)) onExit_(status);
}

std::optional<std::string> FakeScriptRunner::run(const std::string& source) {
    sources.push_back(source);
    const auto answer = answers.find(source);
    return answer == answers.end() ? std::nullopt : std::optional(answer->second);
}

} // namespace halvo
