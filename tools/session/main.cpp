#include "session/PrivateSession.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <sys/signalfd.h>
#include <unistd.h>
#include <vector>

namespace {

using halvo::session::Options;
using halvo::session::PrivateSession;
using halvo::session::SpawnedProgram;
using halvo::session::SpawnRequest;

constexpr int kUsageStatus = 2;
constexpr int kNoSessionStatus = 125;

struct CommandLine {
    Options options;
    std::vector<std::string> command;
};

std::optional<std::uint32_t> number(std::string_view text) {
    std::uint32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<CommandLine> parse(const std::vector<std::string>& words) {
    CommandLine line;
    std::size_t index = 0;
    for (; index < words.size() && words[index].starts_with("--"); ++index) {
        const std::string& option = words[index];
        if (option == "--") {
            ++index;
            break;
        }
        if (option == "--pulse") {
            line.options.withPulse = true;
            continue;
        }
        const auto value = index + 1 < words.size() ? number(words[index + 1]) : std::nullopt;
        if (!value) return std::nullopt;
        if (option == "--rate") {
            line.options.rate = *value;
        } else if (option == "--quantum") {
            line.options.quantum = *value;
        } else if (option == "--outputs" && *value <= 26) {
            line.options.outputs = halvo::session::simulatedOutputs(*value);
        } else {
            return std::nullopt;
        }
        ++index;
    }
    line.command.assign(words.begin() + static_cast<std::ptrdiff_t>(index), words.end());
    if (line.command.empty()) return std::nullopt;
    return line;
}

/// Passes the signals that end this program on to the command, until the command ends.
int superviseUntilEnd(SpawnedProgram& program, int signals) {
    for (;;) {
        // The end of a child is one of the signals, so nothing is missed between the two calls.
        if (const auto status = program.wait(std::chrono::milliseconds(0))) return *status;
        signalfd_siginfo information{};
        if (::read(signals, &information, sizeof information) != sizeof information) continue;
        const auto number = static_cast<int>(information.ssi_signo);
        if (number != SIGCHLD) (void)program.signal(number);
    }
}

} // namespace

int main(int argc, char** argv) {
    const auto line = parse({argv + 1, argv + argc});
    if (!line) {
        std::fputs("usage: halvo-session [--rate N] [--quantum N] [--outputs N] [--pulse] [--] "
                   "command [argument...]\n",
                   stderr);
        return kUsageStatus;
    }
    sigset_t taken;
    sigemptyset(&taken);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD})
        sigaddset(&taken, signal);
    ::sigprocmask(SIG_BLOCK, &taken, nullptr);
    const int signals = ::signalfd(-1, &taken, SFD_CLOEXEC);

    auto session = PrivateSession::create(line->options);
    if (!session) {
        std::fprintf(stderr, "halvo-session: %s\n", session.error().c_str());
        return kNoSessionStatus;
    }
    SpawnRequest request;
    request.arguments = line->command;
    request.environment = (*session)->environment();
    request.inputDescriptor = STDIN_FILENO;
    // With the terminal's own group an interactive command can read and be interrupted.
    request.group = SpawnRequest::Group::callers;
    auto program = SpawnedProgram::start(request);
    if (!program) {
        std::fprintf(stderr, "halvo-session: %s\n", program.error().c_str());
        return 127;
    }
    return superviseUntilEnd(**program, signals);
}
