#include "driver/linux/Driver.h"
#include "driver/linux/DriverSupervisor.h"

#include <charconv>
#include <cstdio>
#include <span>
#include <string_view>

namespace {

using namespace halvo::driver;

constexpr std::chrono::milliseconds kLongestHolderEnd{4000};
constexpr int kUsage = 64;

int runSupervised(pid_t supervisor) {
    return Driver(supervisor).run();
}

pid_t processId(std::string_view text) {
    pid_t value = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

int usage() {
    std::fputs("usage: halvo-audio-device [--keep-alive | --start | --end]\n"
               "Provides the sound server's output \"Halvo Virtual Output\".\n"
               "  --keep-alive  restart it when it dies; end with the sound server\n"
               "  --start       the same in the background, unless it runs already\n"
               "  --end         end what --keep-alive or --start started\n",
               stderr);
    return kUsage;
}

} // namespace

int main(int count, char** words) {
    const std::span arguments(words, static_cast<std::size_t>(count));
    if (count < 2) return Driver().run();
    const std::string_view option = arguments[1];
    if (option == "--keep-alive")
        return DriverSupervisor(runSupervised).run(count > 2 ? processId(arguments[2]) : 0);
    if (count > 2) return usage();
    if (option == "--start")
        return SupervisorLock().holder() ? 0 : DriverSupervisor(runSupervised).runInBackground();
    if (option == "--end") return SupervisorLock().endHolder(kLongestHolderEnd) ? 0 : 1;
    return usage();
}
