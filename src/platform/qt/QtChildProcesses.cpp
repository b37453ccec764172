#include "platform/qt/QtChildProcesses.h"

#include <QProcess>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

constexpr int kLongestRun = 10000; // milliseconds
constexpr long kMostDescriptors = 1024;

void prepare(QProcess& process, const Command& command) {
    QStringList arguments;
    for (const auto& argument : command.arguments)
        arguments.append(QString::fromStdString(argument));
    process.setProgram(QString::fromStdString(command.program));
    process.setArguments(arguments);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const auto limit = std::min(::sysconf(_SC_OPEN_MAX), kMostDescriptors);
    process.setChildProcessModifier([limit] {
        sigset_t none;
        sigemptyset(&none);
        (void)::sigprocmask(SIG_SETMASK, &none, nullptr);
        // Marked, not closed: the toolkit has one of its own by which it tells a failed start.
        for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor)
            (void)::fcntl(descriptor, F_SETFD, FD_CLOEXEC); // most are none
    });
}

int statusOf(const QProcess& process) {
    const bool crashed = process.exitStatus() == QProcess::CrashExit;
    return crashed ? 128 + process.exitCode() : process.exitCode();
}

/// A launched program on the main loop. Once nobody listens it goes by itself when it has ended.
class FollowedProcess final : public QProcess {
  public:
    explicit FollowedProcess(ChildProcessHandlers handlers) : handlers_(std::move(handlers)) {
        connect(this, &QProcess::readyReadStandardOutput, this, [this] { readOutput(); });
        connect(this, &QProcess::readChannelFinished, this, [this] { takeEndOfOutput(); });
        connect(this, &QProcess::finished, this, [this] { takeEnd(); });
    }

    /// Nobody listens any more. The handler that runs may be the one that says so.
    void abandon() {
        abandoned_ = true;
        handlers_ = {};
        closeReadChannel(StandardOutput);
        if (state() == NotRunning) deleteLater();
    }

  private:
    void readOutput() {
        const QByteArray bytes = readAllStandardOutput();
        const auto handler = handlers_.onOutput;
        if (handler && !bytes.isEmpty()) handler(bytes.toStdString());
    }

    void takeEndOfOutput() {
        readOutput();
        if (const auto handler = std::exchange(handlers_.onEndOfOutput, nullptr)) handler();
    }

    void takeEnd() {
        const int status = statusOf(*this);
        if (abandoned_) return deleteLater();
        if (const auto handler = std::exchange(handlers_.onExit, nullptr)) handler(status);
    }

    ChildProcessHandlers handlers_;
    bool abandoned_ = false;
};

class QtChildProcess final : public ChildProcess {
  public:
    explicit QtChildProcess(FollowedProcess* process)
        : process_(process), identifier_(process->processId()) {}
    ~QtChildProcess() override { process_->abandon(); }
    QtChildProcess(const QtChildProcess&) = delete;
    QtChildProcess& operator=(const QtChildProcess&) = delete;

    std::int64_t processIdentifier() const override { return identifier_; }
    bool isRunning() const override { return process_->state() != QProcess::NotRunning; }
    void terminate() override { process_->terminate(); }

  private:
    FollowedProcess* process_; ///< its own owner from `abandon` on
    std::int64_t identifier_;  ///< the toolkit forgets it at the end
};

} // namespace

std::expected<std::unique_ptr<ChildProcess>, std::string>
QtChildProcessLauncher::launch(const Command& command, ChildProcessHandlers handlers) {
    auto process = std::make_unique<FollowedProcess>(std::move(handlers));
    prepare(*process, command);
    process->start(QIODevice::ReadOnly);
    if (!process->waitForStarted(-1)) {
        return std::unexpected(process->errorString().toStdString());
    }
    return std::make_unique<QtChildProcess>(process.release());
}

std::expected<int, std::string> QtChildProcessLauncher::run(const Command& command) {
    QProcess process;
    prepare(process, command);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start();
    if (!process.waitForStarted(-1)) return std::unexpected(process.errorString().toStdString());
    if (!process.waitForFinished(kLongestRun)) {
        process.kill();
        (void)process.waitForFinished(-1);
    }
    return statusOf(process);
}

} // namespace halvo
