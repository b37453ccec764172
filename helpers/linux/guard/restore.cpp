#include "SessionRestore.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <syslog.h>

namespace {

using Result = halvo::SessionRestore::Result;

/// Service managers restart a server that died within seconds, or not at all.
constexpr std::chrono::seconds kLongest{10};

constexpr const char* kUsage =
    "Usage: halvo-restore\n"
    "Gives the sound devices their own levels and the default output back where Halvo has ended\n"
    "without doing so. Does nothing while Halvo runs.\n";

int restore() {
    const auto result = halvo::SessionRestore::run(kLongest);
    if (result == Result::failed) {
        ::openlog("halvo", LOG_PID, LOG_USER);
        ::syslog(LOG_WARNING, "%s",
                 "Halvo: The sound devices could not be given back; the next start does it");
    }
    return result == Result::failed ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** /*argv*/) {
    if (argc != 1) {
        (void)std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        return restore();
    } catch (const std::exception& problem) { // out of memory: the next start restores
        (void)std::fprintf(stderr, "%s\n", problem.what());
        return EXIT_FAILURE;
    }
}
