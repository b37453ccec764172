#include "realtime/ForkedRun.h"

#include <cstdio>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvo::test {

namespace {

constexpr int kClean = 42; // no library exits with it by chance
constexpr int kOffence = 43;

/// Shared with the child; a fork keeps addresses, so literals can be handed over as pointers.
struct Report {
    const char* place = "";
    const char* offence = "";
    int systemCall = -1;
};

Report* report = nullptr;

[[noreturn]] void leave(int code) noexcept {
    syscall(SYS_exit_group, code);
    __builtin_unreachable();
}

} // namespace

Ending runForked(const std::function<void()>& work) {
    void* const page =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) return {false, "no shared page", ""};
    report = new (page) Report;

    (void)std::fflush(nullptr); // what is buffered belongs to the parent
    const pid_t child = fork();
    if (child == 0) {
        work();
        endCleanly();
    }
    int status = 0;
    const bool ended = child > 0 && waitpid(child, &status, 0) == child;
    Ending ending{ended && WIFEXITED(status) && WEXITSTATUS(status) == kClean, report->offence,
                  report->place};
    if (report->systemCall >= 0) {
        ending.offence = "system call " + std::to_string(report->systemCall);
    }
    if (!ending.clean && ending.offence.empty() && WIFSIGNALED(status)) {
        ending.offence = "signal " + std::to_string(WTERMSIG(status));
    }
    munmap(page, sizeof(Report));
    report = nullptr;
    return ending;
}

void notePlace(const char* place) noexcept {
    report->place = place;
}

void endWithOffence(const char* what) noexcept {
    report->offence = what;
    leave(kOffence);
}

void endWithSystemCall(int number) noexcept {
    report->systemCall = number;
    leave(kOffence);
}

void endCleanly() noexcept {
    leave(kClean);
}

} // namespace halvo::test
