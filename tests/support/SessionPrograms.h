#pragma once

#include <string>
#include <vector>

namespace halvo::test {

/// The processes of that name in a session, recognised by the session's directory in their
/// environment.
std::vector<int> processesOf(const std::string& sessionDirectory, const std::string& program);

/// Puts the bundle's drop-in into the session's configuration, as the package does with the
/// system's: the sound server starts what it names. Counts from the server's next start on.
void installDropIn(const std::string& sessionDirectory, const std::string& bundle);

/// One line of /proc/PID/status without its name; empty when the process has ended.
std::string statusField(int pid, const std::string& field);

} // namespace halvo::test
