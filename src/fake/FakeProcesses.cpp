#include "fake/FakeProcesses.h"

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

/// A handle; once destroyed, its handlers are not called.
class FakeChildProcessLauncher::Process final : public ChildProcess {
  public:
    Process(FakeChildProcessLauncher& launcher, std::shared_ptr<ChildProcessHandlers> handlers)
        : launcher_(launcher), handlers_(std::move(handlers)) {}
    ~Process() override { *handlers_ = {}; }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    std::int64_t processIdentifier() const override { return 4711; }
    bool isRunning() const override {
        return launcher_.isRunning_ && launcher_.handlers_ == handlers_;
    }
    void terminate() override {
        if (!isRunning()) return;
        launcher_.isRunning_ = false;
        launcher_.log_.add("terminate helper");
    }

  private:
    FakeChildProcessLauncher& launcher_;
    std::shared_ptr<ChildProcessHandlers> handlers_;
};

namespace {

std::string lineOf(const char* verb, const Command& command) {
    std::string line = std::string(verb) + " " + command.program;
    for (const auto& argument : command.arguments)
        line += " " + argument;
    return line;
}

} // namespace

std::expected<std::unique_ptr<ChildProcess>, std::string>
FakeChildProcessLauncher::launch(const Command& command, ChildProcessHandlers handlers) {
    log_.add(lineOf("launch", command));
    if (launchFails) return std::unexpected("no such program");
    earlierHandlers_ = std::move(handlers_);
    handlers_ = std::make_shared<ChildProcessHandlers>(std::move(handlers));
    isRunning_ = true;
    return std::make_unique<Process>(*this, handlers_);
}

std::expected<int, std::string> FakeChildProcessLauncher::run(const Command& command) {
    log_.add(lineOf("run", command));
    if (launchFails) return std::unexpected("no such program");
    return 0;
}

void FakeChildProcessLauncher::say(const std::string& bytes) {
    // Copies: a handler may destroy its process.
    if (!isRunning_) return;
    if (const auto handler = handlers_->onOutput) handler(bytes);
}

void FakeChildProcessLauncher::closeOutput() {
    if (const auto handler = handlers_->onEndOfOutput) handler();
}

void FakeChildProcessLauncher::exit(int status) {
    if (!std::exchange(isRunning_, false)) return;
    if (const auto handler = handlers_->onExit) handler(status);
}

void FakeChildProcessLauncher::exitEarlier(int status) {
    if (const auto handler = earlierHandlers_->onExit) handler(status);
}

std::expected<std::optional<std::string>, ScriptError>
FakeScriptRunner::run(const std::string& source) {
    sources.push_back(source);
    const auto error = errors.find(source);
    if (error != errors.end()) return std::unexpected(error->second);
    const auto answer = answers.find(source);
    return answer == answers.end() ? std::nullopt : std::optional(answer->second);
}

std::optional<Image> FakeImageReader::read(const std::string& bytes, int /*longestSide*/) {
    if (!bytes.starts_with("image")) return std::nullopt;
    return Image{1, 1, std::make_shared<const std::vector<std::uint32_t>>(1, 0xFF000000U)};
}

} // namespace halvo
