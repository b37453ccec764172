#include "HelperLoop.h"
#include "PlayerCommand.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

namespace {

constexpr const char* kUsage =
    "Usage: halvo-media-helper WORD\n"
    "Reports what the players of the desktop session play, or sends them a command.\n"
    "\n"
    "  loop       write a JSON object per line for every change, until the reader goes\n"
    "  play, pause, toggle_play_pause, next_track, previous_track\n"
    "             send this to the player that is reported\n";

int runLoop() {
    (void)std::signal(SIGPIPE, SIG_IGN); // the write reports a closed pipe
    const auto loop = halvo::helper::HelperLoop::create();
    return loop ? loop->run() : EXIT_FAILURE;
}

int runWord(std::string_view word) {
    if (word == "loop") return runLoop();
    if (const auto method = halvo::helper::methodFor(word)) {
        return halvo::helper::sendCommand(*method);
    }
    (void)std::fputs(kUsage, stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return runWord(argc == 2 ? argv[1] : "");
    } catch (const std::exception& problem) { // out of memory: the application restarts this helper
        (void)std::fprintf(stderr, "%s\n", problem.what());
        return EXIT_FAILURE;
    }
}
