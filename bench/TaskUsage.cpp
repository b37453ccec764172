#include "TaskUsage.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace halvo::bench {
namespace {

namespace fs = std::filesystem;

std::uint64_t voluntarySwitches(const fs::path& status) {
    constexpr std::string_view kName = "voluntary_ctxt_switches:";
    std::ifstream file(status);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(kName)) return std::stoull(line.substr(kName.size()));
    return 0;
}

std::uint64_t runNanoseconds(const fs::path& schedulerStatistics) {
    std::ifstream file(schedulerStatistics);
    std::uint64_t nanoseconds = 0;
    file >> nanoseconds;
    return nanoseconds;
}

} // namespace

std::optional<TaskUsage> TaskUsage::of(int pid) {
    TaskUsage usage;
    std::error_code error;
    const fs::path folder = "/proc/" + std::to_string(pid) + "/task";
    for (const auto& task : fs::directory_iterator(folder, error)) {
        const int thread = std::stoi(task.path().filename());
        usage.tasks_[thread] = {.nanoseconds = runNanoseconds(task.path() / "schedstat"),
                                .sleeps = voluntarySwitches(task.path() / "status")};
    }
    if (error || usage.tasks_.empty()) return std::nullopt;
    return usage;
}

double TaskUsage::cpuSecondsSince(const TaskUsage& earlier) const {
    std::uint64_t nanoseconds = 0;
    for (const auto& [thread, counters] : tasks_) {
        const auto before = earlier.tasks_.find(thread);
        nanoseconds += counters.nanoseconds -
                       (before == earlier.tasks_.end() ? 0 : before->second.nanoseconds);
    }
    return static_cast<double>(nanoseconds) * 1e-9;
}

std::uint64_t TaskUsage::wakeupsSince(const TaskUsage& earlier) const {
    std::uint64_t sleeps = 0;
    for (const auto& [thread, counters] : tasks_) {
        const auto before = earlier.tasks_.find(thread);
        sleeps += counters.sleeps - (before == earlier.tasks_.end() ? 0 : before->second.sleeps);
    }
    return sleeps;
}

} // namespace halvo::bench
