#include "linux/process/LinuxChildProcesses.h"

#include "linux/process/SpawnedChild.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

constexpr std::chrono::seconds kLongestRun{10};
constexpr std::chrono::milliseconds kLookOnly{0};
constexpr std::size_t kReadSize = 65536; ///< bytes; what a pipe holds

} // namespace

/// A launched program on the main loop, shared by its handle and, until it is reaped, the launcher.
/// It goes by deleteLater, because its last owner may be one of its own handlers.
class WatchedProcess final : public QObject {
  public:
    WatchedProcess(SpawnedChild child, ChildProcessHandlers handlers)
        : child_(std::move(child)), output_(child_.takeOutput()), handlers_(std::move(handlers)),
          readable_(output_.get(), QSocketNotifier::Read),
          ended_(child_.processDescriptor(), QSocketNotifier::Read) {
        connect(&readable_, &QSocketNotifier::activated, this, [this] { readOutput(); });
        connect(&ended_, &QSocketNotifier::activated, this, [this] { reap(); });
    }

    pid_t pid() const { return child_.pid(); }
    bool isRunning() const { return isRunning_; }
    void terminate() const { (void)child_.signal(SIGTERM); } // it may have ended just now

    /// Nobody listens any more.
    void abandon() {
        handlers_ = {};
        closeOutput();
    }

    std::function<void()> onReaped; ///< the launcher's

  private:
    void closeOutput() {
        readable_.setEnabled(false);
        output_ = FileDescriptor();
    }

    void readOutput() {
        if (!output_) return;
        std::array<char, kReadSize> bytes;
        const ssize_t count = ::read(output_.get(), bytes.data(), bytes.size());
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (count > 0) {
            const auto handler = handlers_.onOutput;
            if (handler) handler(std::string(bytes.data(), static_cast<std::size_t>(count)));
            return;
        }
        closeOutput();
        if (const auto handler = std::exchange(handlers_.onEndOfOutput, nullptr)) handler();
    }

    void reap() {
        const auto status = child_.wait(kLookOnly);
        if (!status || !std::exchange(isRunning_, false)) return;
        ended_.setEnabled(false);
        const auto reaped = std::exchange(onReaped, nullptr);
        if (const auto handler = std::exchange(handlers_.onExit, nullptr)) handler(*status);
        if (reaped) reaped();
    }

    SpawnedChild child_;
    FileDescriptor output_;
    ChildProcessHandlers handlers_;
    bool isRunning_ = true;
    QSocketNotifier readable_;
    QSocketNotifier ended_;
};

namespace {

class LinuxChildProcess final : public ChildProcess {
  public:
    explicit LinuxChildProcess(std::shared_ptr<WatchedProcess> process)
        : process_(std::move(process)) {}
    ~LinuxChildProcess() override { process_->abandon(); }
    LinuxChildProcess(const LinuxChildProcess&) = delete;
    LinuxChildProcess& operator=(const LinuxChildProcess&) = delete;

    std::int64_t processIdentifier() const override { return process_->pid(); }
    bool isRunning() const override { return process_->isRunning(); }
    void terminate() override {
        if (isRunning()) process_->terminate();
    }

  private:
    std::shared_ptr<WatchedProcess> process_;
};

} // namespace

std::expected<std::unique_ptr<ChildProcess>, std::string>
LinuxChildProcessLauncher::launch(const Command& command, ChildProcessHandlers handlers) {
    auto child = SpawnedChild::start(command, SpawnedChild::Output::pipe);
    if (!child) return std::unexpected(child.error());
    const std::shared_ptr<WatchedProcess> process(
        new WatchedProcess(std::move(*child), std::move(handlers)),
        [](WatchedProcess* gone) { gone->deleteLater(); });
    running_->insert(process);
    process->onReaped = [running = std::weak_ptr(running_), key = std::weak_ptr(process)] {
        if (const auto all = running.lock()) all->erase(key.lock());
    };
    return std::make_unique<LinuxChildProcess>(process);
}

std::expected<int, std::string> LinuxChildProcessLauncher::run(const Command& command) {
    auto child = SpawnedChild::start(command, SpawnedChild::Output::discarded);
    if (!child) return std::unexpected(child.error());
    if (const auto status = child->wait(kLongestRun)) return *status;
    (void)child->signal(SIGKILL);
    return child->wait(kLongestRun).value_or(128 + SIGKILL);
}

} // namespace halvo
