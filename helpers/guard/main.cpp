// Waits for the application's end: resident, and so small that it links nothing but the C library.
// Another program does what has to be done then.

#include "ProgramPath.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* kUsage =
    "Usage: halvo-session-guard\n"
    "Started by Halvo with a pipe as its standard input. When that breaks without a word, Halvo "
    "has\n"
    "ended badly, and halvo-restore gives the sound devices back in its place. With a word it "
    "only\n"
    "stays until the session manager has kept what Halvo gave back.\n";
constexpr const char* kRestoreProgram = "halvo-restore";

enum class End { orderly, bad, unknown };

/// Sleeps until the application reports that it has given everything back, or has ended.
End waitForTheEnd() {
    char word = 0;
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, &word, 1);
        if (count > 0) return End::orderly;
        if (count == 0) return End::bad;
        if (errno != EINTR) return End::unknown;
    }
}

/// Executes the program beside this one; `option` may be null.
void become(const char* name, char* option) {
    std::array<char, 4096> path{};
    if (!halvo::programPath(path.data(), path.size())) return;
    char* const slash = std::strrchr(path.data(), '/');
    if (slash == nullptr) return;
    const std::size_t room = path.size() - static_cast<std::size_t>(slash + 1 - path.data());
    if (std::strlen(name) >= room) return;
    std::strcpy(slash + 1, name);
    std::array<char*, 3> words{path.data(), option, nullptr};
    ::execv(path.data(), words.data());
}

} // namespace

int main() {
    struct stat input{};
    if (::fstat(STDIN_FILENO, &input) != 0 || !S_ISFIFO(input.st_mode)) {
        (void)std::fputs(kUsage, stderr);
        return 2;
    }
    std::array<char, 9> ending{"--ending"};
    switch (waitForTheEnd()) {
    case End::orderly:
        become(kRestoreProgram, ending.data());
        break;
    case End::bad:
        become(kRestoreProgram, nullptr);
        break;
    case End::unknown:
        break;
    }
    return EXIT_FAILURE;
}
