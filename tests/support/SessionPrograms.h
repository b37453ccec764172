#pragma once

#include <string>
#include <vector>

namespace halvo::test {

/// The processes of that name in a session, recognised by the session's directory in their
/// environment.
std::vector<int> processesOf(const std::string& sessionDirectory, const std::string& program);

/// One line of /proc/PID/status without its name; empty when the process has ended.
std::string statusField(int pid, const std::string& field);

} // namespace halvo::test
