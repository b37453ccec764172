#pragma once

#include <string>
#include <vector>

namespace halvo::test {

/// The processes of that name inside a session, which they are known by having its directory in
/// their environment.
std::vector<int> processesOf(const std::string& sessionDirectory, const std::string& program);

/// One line of /proc/PID/status without its name; empty when the process is gone.
std::string statusField(int pid, const std::string& field);

} // namespace halvo::test
