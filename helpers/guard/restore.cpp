#include "RestoreHost.h"
#include "SessionRestore.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>
#include <syslog.h>

namespace {

using Occasion = halvo::SessionRestore::Occasion;
using Result = halvo::SessionRestore::Result;

/// Service managers restart a server that died within seconds, or not at all.
constexpr std::chrono::seconds kLongest{10};

constexpr const char* kUsage =
    "Usage: halvo-restore [--ending | --session]\n"
    "Gives the sound devices their own levels and the default output back where Halvo has ended\n"
    "without doing so. Does nothing while Halvo runs.\n"
    "  --ending   Halvo has done it: only waits until the session manager has kept the levels\n"
    "  --session  the sound server has just started: only where the last session left something\n";

std::optional<Occasion> occasionOf(int count, char** words) {
    if (count == 1) return Occasion::crash;
    const std::string_view word = words[1];
    if (count == 2 && word == "--ending") return Occasion::ending;
    if (count == 2 && word == "--session") return Occasion::session;
    return std::nullopt;
}

int restore(Occasion occasion) {
    const auto host = halvo::makeRestoreHost();
    const auto result = halvo::SessionRestore(*host).run(occasion, kLongest);
    if (result == Result::failed) {
        ::openlog("halvo", LOG_PID, LOG_USER);
        ::syslog(LOG_WARNING, "%s",
                 "Halvo: The sound devices could not be given back; the next start does it");
    }
    return result == Result::failed ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace

int main(int count, char** words) {
    const auto occasion = occasionOf(count, words);
    if (!occasion) {
        (void)std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        return restore(*occasion);
    } catch (const std::exception& problem) { // out of memory: the next start restores
        (void)std::fprintf(stderr, "%s\n", problem.what());
        return EXIT_FAILURE;
    }
}
