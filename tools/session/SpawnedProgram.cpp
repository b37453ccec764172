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
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace halvo::session {

namespace {

constexpr SpawnedProgram::Milliseconds kGrace{2000};

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
              preparation.environment.data());
    giveUp(preparation);
}

int exitStatus(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
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
    auto arguments = request.arguments;
    auto environment = request.environment;
    const Preparation preparation{pointers(arguments), pointers(environment), request, ::getpid(),
                                  pipe[1]};
    const pid_t pid = ::fork();
    if (pid == 0) becomeProgram(preparation);
    ::close(pipe[1]);
    int error = pid < 0 ? errno : 0;
    const bool failed = pid < 0 || ::read(pipe[0], &error, sizeof error) > 0;
    ::close(pipe[0]);
    if (failed) {
        if (pid > 0) ::waitpid(pid, nullptr, 0);
        return std::unexpected(request.arguments.front() + ": " + std::strerror(error));
    }
    const auto descriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    return std::unique_ptr<SpawnedProgram>(new SpawnedProgram(pid, descriptor, std::move(request)));
}

SpawnedProgram::SpawnedProgram(int pid, int processDescriptor, SpawnRequest request)
    : pid_(pid), processDescriptor_(processDescriptor), request_(std::move(request)) {}

SpawnedProgram::~SpawnedProgram() {
    end();
    if (processDescriptor_ >= 0) ::close(processDescriptor_);
}

bool SpawnedProgram::isRunning() {
    return !wait(Milliseconds{0});
}

bool SpawnedProgram::signal(int number) {
    return isRunning() && ::kill(pid_, number) == 0;
}

std::optional<int> SpawnedProgram::wait(Milliseconds deadline) {
    if (status_) return status_;
    const auto until = std::chrono::steady_clock::now() + deadline;
    pollfd ended{processDescriptor_, POLLIN, 0};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<Milliseconds>(until - std::chrono::steady_clock::now());
        const auto timeout = static_cast<int>(std::max(left, Milliseconds{0}).count());
        const int ready = ::poll(&ended, 1, timeout);
        if (ready > 0) break;
        if (ready == 0 || errno != EINTR) return std::nullopt;
    }
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0) {
        if (errno != EINTR) return status_ = -1;
    }
    return status_ = exitStatus(status);
}

void SpawnedProgram::end() {
    if (status_) return;
    const int target = request_.group == SpawnRequest::Group::own ? -pid_ : pid_;
    ::kill(target, SIGTERM);
    pollfd ended{processDescriptor_, POLLIN, 0};
    (void)::poll(&ended, 1, static_cast<int>(kGrace.count()));
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
