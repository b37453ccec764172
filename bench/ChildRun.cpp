#include "ChildRun.h"

#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvo::bench {
namespace {

/// The program's number; the error's number in the other case.
std::expected<pid_t, int> spawn(const std::vector<std::string>& words, const std::string& log) {
    std::vector<std::string> copies = words;
    std::vector<char*> pointers;
    for (std::string& word : copies)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(),
                                       O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t pid = -1;
    const int error =
        ::posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return std::unexpected(error);
    return pid;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

std::string lastLine(const std::string& path) {
    std::ifstream file(path);
    std::string last;
    for (std::string line; std::getline(file, line);)
        if (!line.empty()) last = line;
    return last;
}

} // namespace

std::expected<double, std::string> cpuSecondsOf(const std::vector<std::string>& words,
                                                const std::string& log) {
    const auto pid = spawn(words, log);
    if (!pid) return std::unexpected(words[0] + ": " + std::strerror(pid.error()));
    int status = 0;
    rusage usage{};
    while (::wait4(*pid, &status, 0, &usage) < 0)
        if (errno != EINTR) return std::unexpected(words[0] + ": " + std::strerror(errno));
    if (status != 0) return std::unexpected(words[0] + " failed: " + lastLine(log));
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::string firstLineOf(const std::vector<std::string>& words, const std::string& log) {
    if (!cpuSecondsOf(words, log)) return {};
    std::ifstream file(log);
    std::string line;
    std::getline(file, line);
    return line;
}

} // namespace halvo::bench
