#pragma once

#include <expected>
#include <string>
#include <vector>

namespace halvo::bench {

/// Runs a program to its end, its output kept in the file `log`, and gives the processor seconds,
/// user's and system's, that it and its children took; else a sentence with what it said last.
std::expected<double, std::string> cpuSecondsOf(const std::vector<std::string>& words,
                                                const std::string& log);

/// The first line that a program prints; empty when it cannot be run or fails.
std::string firstLineOf(const std::vector<std::string>& words, const std::string& log);

} // namespace halvo::bench
