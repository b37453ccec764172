#include "qt/PatientProcess.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringDecoder>

#include <csignal>
#include <cstring>

namespace halvo::PatientProcess {

namespace {

QStringList toList(const std::vector<std::string>& words) {
    QStringList list;
    for (const auto& word : words)
        list.append(QString::fromStdString(word));
    return list;
}

std::string decoded(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::string() : text.toStdString();
}

} // namespace

std::expected<Result, std::string> run(const Command& command,
                                       std::optional<std::chrono::milliseconds> longest) {
    QString program = QString::fromStdString(command.program);
    if (!program.contains(u'/')) program = QStandardPaths::findExecutable(program);
    if (program.isEmpty()) return std::unexpected(command.program + ": command not found");

    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setChildProcessModifier([] {
        sigset_t none;
        sigemptyset(&none);
        (void)::sigprocmask(SIG_SETMASK, &none, nullptr);
    });
    process.start(program, toList(command.arguments));
    if (!process.waitForStarted(-1)) return std::unexpected(process.errorString().toStdString());
    if (!process.waitForFinished(longest ? static_cast<int>(longest->count()) : -1)) {
        process.kill();
        (void)process.waitForFinished(-1);
    }
    const int ending = process.exitCode(); // the signal's number after a crash
    const bool crashed = process.exitStatus() == QProcess::CrashExit;
    return Result{crashed ? 128 + ending : ending, decoded(process.readAll())};
}

} // namespace halvo::PatientProcess
