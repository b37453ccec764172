#include "session/SpawnedProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace halvo::session {

namespace {

constexpr SpawnedProgram::Milliseconds kGrace{2000};
constexpr std::chrono::hours kLongestRun{1};

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

/// What the child needs between fork and exec, where nothing may be allocated.
struct Preparation {
    std::vector<char*> arguments;
    std::vector<char*> environment;
    const SpawnRequest& request;
    int parent;
    int errorPipe;
};

[[noreturn]] void giveUp(const Preparation& preparation) {
    const int error = errno;
    (void)!::write(preparation.errorPipe, &error, sizeof error);
    _exit(127);
}

void redirect(const Preparation& preparation, const std::string& file, int descriptor) {
    if (file.empty()) return;
    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (opened < 0 || ::dup2(opened, descriptor) < 0) giveUp(preparation);
}

[[noreturn]] void becomeProgram(const Preparation& preparation) {
    const SpawnRequest& request = preparation.request;
    if (request.group == SpawnRequest::Group::own) ::setpgid(0, 0);
    if (request.lifetime == SpawnRequest::Lifetime::endsWithOwner) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != preparation.parent) _exit(127);
    }
    for (int number = 1; number < NSIG; ++number)
        (void)::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    int input = request.inputDescriptor;
    if (input < 0) input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input != STDIN_FILENO && ::dup2(input, STDIN_FILENO) < 0) giveUp(preparation);
    redirect(preparation, request.outputFile, STDOUT_FILENO);
    redirect(preparation, request.errorFile, STDERR_FILENO);
    ::execvpe(preparation.arguments[0], preparation.arguments.data(),
              request.environment.empty() ? environ : preparation.environment.data());
    giveUp(preparation);
}

int exitStatus(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

std::string contents(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace

std::expected<std::unique_ptr<SpawnedProgram>, std::string>
SpawnedProgram::start(SpawnRequest request) {
    if (request.arguments.empty()) return std::unexpected("no program was named");
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return std::unexpected(std::string("pipe: ") + std::strerror(errno));
    }
    const FileDescriptor readEnd(pipe[0]);
    FileDescriptor writeEnd(pipe[1]);
    auto arguments = request.arguments;
    auto environment = request.environment;
    const Preparation preparation{pointers(arguments), pointers(environment), request, ::getpid(),
                                  pipe[1]};
    const pid_t pid = ::fork();
    if (pid == 0) becomeProgram(preparation);
    int error = pid < 0 ? errno : 0;
    (void)writeEnd.close(); // the child alone keeps it, until it executes the program
    if (pid < 0 || ::read(readEnd.get(), &error, sizeof error) > 0) {
        if (pid > 0) ::waitpid(pid, nullptr, 0);
        return std::unexpected(request.arguments.front() + ": " + std::strerror(error));
    }
    FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    return std::unique_ptr<SpawnedProgram>(
        new SpawnedProgram(pid, std::move(process), std::move(request)));
}

std::expected<SpawnedProgram::Completed, std::string>
SpawnedProgram::run(const std::vector<std::string>& arguments, const std::string& log) {
    (void)::unlink(log.c_str()); // the log of the program before, if there was one
    auto program =
        start({.arguments = arguments, .environment = {}, .outputFile = log, .errorFile = log});
    if (!program) return std::unexpected(program.error());
    const auto status = (*program)->wait(kLongestRun);
    std::string output = (*program)->standardOutput();
    if (status == 0) return Completed{std::move(output), (*program)->cpuSeconds_};
    while (output.ends_with('\n'))
        output.pop_back();
    return std::unexpected(arguments.front() + (status ? " failed: " : " does not end: ") +
                           output.substr(output.rfind('\n') + 1));
}

SpawnedProgram::SpawnedProgram(int pid, FileDescriptor process, SpawnRequest request)
    : pid_(pid), process_(std::move(process)), request_(std::move(request)) {}

SpawnedProgram::~SpawnedProgram() {
    end();
}

bool SpawnedProgram::isRunning() {
    return !wait(Milliseconds{0});
}

bool SpawnedProgram::signal(int number) {
    return isRunning() && ::kill(pid_, number) == 0;
}

bool SpawnedProgram::hasEnded(Milliseconds deadline) const {
    const auto until = std::chrono::steady_clock::now() + deadline;
    pollfd ended{process_.get(), POLLIN, 0};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<Milliseconds>(until - std::chrono::steady_clock::now());
        const auto timeout = static_cast<int>(std::max(left, Milliseconds{0}).count());
        const int ready = ::poll(&ended, 1, timeout);
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

std::optional<int> SpawnedProgram::wait(Milliseconds deadline) {
    if (status_) return status_;
    if (!hasEnded(deadline)) return std::nullopt;
    int status = 0;
    rusage usage{};
    while (::wait4(pid_, &status, 0, &usage) < 0) {
        if (errno != EINTR) return status_ = -1;
    }
    cpuSeconds_ = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    return status_ = exitStatus(status);
}

void SpawnedProgram::end() {
    if (status_) return;
    const int target = request_.group == SpawnRequest::Group::own ? -pid_ : pid_;
    ::kill(target, SIGTERM);
    (void)hasEnded(kGrace);
    // Before it is reaped: until then its number, and so the group's, belongs to nobody else.
    ::kill(target, SIGKILL);
    (void)wait(kGrace);
}

std::string SpawnedProgram::standardOutput() const {
    return contents(request_.outputFile);
}

std::string SpawnedProgram::standardError() const {
    return contents(request_.errorFile);
}

} // namespace halvo::session
