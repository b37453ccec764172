#include "qt/QtChildProcesses.h"

#include "posix/FileDescriptor.h"

#include <QProcess>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

constexpr std::chrono::seconds kLongestRun{10};
constexpr long kMostDescriptors = 1024;
constexpr std::size_t kReadSize = 65536; // bytes; what a pipe holds

/// `output`: where the program's standard output goes; negative: where the toolkit leads it.
void prepare(QProcess& process, const Command& command, int output) {
    QStringList arguments;
    for (const auto& argument : command.arguments)
        arguments.append(QString::fromStdString(argument));
    process.setProgram(QString::fromStdString(command.program));
    process.setArguments(arguments);
    process.setStandardInputFile(QProcess::nullDevice());
    const auto limit = std::min(::sysconf(_SC_OPEN_MAX), kMostDescriptors);
    process.setChildProcessModifier([limit, output] {
        sigset_t none;
        sigemptyset(&none);
        (void)::sigprocmask(SIG_SETMASK, &none, nullptr);
        if (output >= 0) (void)::dup2(output, STDOUT_FILENO); // both are open: cannot fail
        // Marked, not closed: the toolkit reports a failed start through a descriptor of its own.
        for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor)
            (void)::fcntl(descriptor, F_SETFD, FD_CLOEXEC); // most are not open
    });
}

int statusOf(const QProcess& process) {
    const int code = process.exitCode(); // the signal's number after a crash
    return process.exitStatus() == QProcess::CrashExit ? 128 + code : code;
}

std::string decoded(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::string() : text.toStdString();
}

/// A launched program on the main loop. Once abandoned it deletes itself when the program ends. It
/// reads a pipe of its own, because QProcess keeps its pipe open until the program ends.
class FollowedProcess final : public QProcess {
  public:
    FollowedProcess(FileDescriptor output, ChildProcessHandlers handlers)
        : handlers_(std::move(handlers)), output_(std::move(output)),
          readable_(output_.get(), QSocketNotifier::Read) {
        connect(&readable_, &QSocketNotifier::activated, this, [this] { readOutput(); });
        connect(this, &QProcess::finished, this, [this] { takeEnd(); });
    }

    /// The handle is gone; one of the handlers may be running.
    void abandon() {
        abandoned_ = true;
        handlers_ = {};
        closeOutput();
        if (state() == NotRunning) deleteLater();
    }

  private:
    void closeOutput() {
        readable_.setEnabled(false);
        output_ = FileDescriptor();
    }

    void readOutput() {
        if (!output_) return;
        std::array<char, kReadSize> bytes;
        const auto count = ::read(output_.get(), bytes.data(), bytes.size());
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (count > 0) {
            const auto handler = handlers_.onOutput;
            if (handler) handler(std::string(bytes.data(), static_cast<std::size_t>(count)));
            return;
        }
        closeOutput();
        if (const auto handler = std::exchange(handlers_.onEndOfOutput, nullptr)) handler();
    }

    void takeEnd() {
        const int status = statusOf(*this);
        if (abandoned_) return deleteLater();
        if (const auto handler = std::exchange(handlers_.onExit, nullptr)) handler(status);
    }

    ChildProcessHandlers handlers_;
    bool abandoned_ = false;
    FileDescriptor output_;
    QSocketNotifier readable_;
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
    FollowedProcess* process_; ///< owns itself from `abandon` on
    std::int64_t identifier_;  ///< QProcess forgets it when the program ends
};

} // namespace

std::expected<std::unique_ptr<ChildProcess>, std::string>
QtChildProcessLauncher::launch(const Command& command, ChildProcessHandlers handlers) {
    auto ends = makePipe();
    if (!ends) return std::unexpected(qt_error_string().toStdString());
    auto process = std::make_unique<FollowedProcess>(std::move(ends->first), std::move(handlers));
    prepare(*process, command, ends->second.get());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(QIODevice::NotOpen);
    if (!process->waitForStarted(-1)) return std::unexpected(process->errorString().toStdString());
    return std::make_unique<QtChildProcess>(process.release());
}

std::expected<int, std::string> QtChildProcessLauncher::run(const Command& command) {
    const auto result = runProcess(command, kLongestRun);
    if (!result) return std::unexpected(result.error());
    return result->status;
}

std::expected<ProcessResult, std::string>
runProcess(const Command& command, std::optional<std::chrono::milliseconds> longest) {
    QProcess process;
    prepare(process, command, /*output*/ -1);
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (!process.program().contains(u'/') &&
        QStandardPaths::findExecutable(process.program()).isEmpty()) {
        return std::unexpected(command.program + ": command not found");
    }
    process.start();
    if (!process.waitForStarted(-1)) return std::unexpected(process.errorString().toStdString());
    if (!process.waitForFinished(longest ? static_cast<int>(longest->count()) : -1)) {
        process.kill();
        (void)process.waitForFinished(-1);
    }
    return ProcessResult{statusOf(process), decoded(process.readAll())};
}

} // namespace halvo
