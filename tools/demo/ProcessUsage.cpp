#include "ProcessUsage.h"

#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace halvo::demo {

std::optional<ProcessUsage> ProcessUsage::of(int pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    std::string line;
    std::ifstream statFile(folder + "/stat");
    if (!std::getline(statFile, line)) return std::nullopt;
    // The name in parentheses may hold blanks; behind it the state is field 3, utime 14, stime 15.
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    double userTicks = 0;
    double systemTicks = 0;
    fields >> userTicks >> systemTicks;

    std::ifstream memoryFile(folder + "/statm");
    double totalPages = 0;
    double residentPages = 0;
    memoryFile >> totalPages >> residentPages;
    if (!fields || !memoryFile) return std::nullopt;
    return ProcessUsage{
        .cpuSeconds = (userTicks + systemTicks) / static_cast<double>(::sysconf(_SC_CLK_TCK)),
        .residentMiB =
            residentPages * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0)};
}

} // namespace halvo::demo
