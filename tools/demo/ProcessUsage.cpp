#include "ProcessUsage.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace halvo::demo {

std::optional<ProcessUsage> ProcessUsage::of(int pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(file, line)) return std::nullopt;
    // The name in parentheses may hold blanks; behind it the state is field 3.
    std::istringstream text(line.substr(line.rfind(')') + 1));
    const std::vector<std::string> fields{std::istream_iterator<std::string>(text), {}};
    const auto field = [&](std::size_t number) { return std::stod(fields.at(number - 3)); };
    return ProcessUsage{
        .cpuSeconds = (field(14) + field(15)) / static_cast<double>(::sysconf(_SC_CLK_TCK)),
        .residentMiB = field(24) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1024.0 * 1024)};
}

} // namespace halvo::demo
