#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace halvo::bench {

/// Everything that was measured, for the terminal: lines of at most 80 columns, each ended. What is
/// not in the report is left out.
std::string table(const nlohmann::ordered_json& report);

/// One aim of the project and whether this run reaches it.
struct Verdict {
    std::string aim;
    double measured = 0;
    bool holds = false;
};

/// The aims that the report has figures for.
std::vector<Verdict> verdicts(const nlohmann::ordered_json& report);

} // namespace halvo::bench
