#pragma once

#include "session/PrivateSession.h"

#include <string>
#include <vector>

namespace halvo::session {

/// Makes the session's directories and the configuration of bus and session manager. False when the
/// disk refuses.
bool writeSessionFiles(const std::string& directory);

/// Writes the sound server's configuration: clock and simulated outputs.
bool writeServerConfiguration(const std::string& directory, const Options& options);

/// The properties of a simulated output, for the server's adapter factory; a higher priority makes
/// the session manager prefer it.
std::vector<std::pair<std::string, std::string>> outputProperties(const SimulatedOutput& output,
                                                                  int priority);

/// The environment of programs inside the session, made from this process's own.
std::vector<std::string> sessionEnvironment(const std::string& directory,
                                            const std::string& ringName, bool withBus);

} // namespace halvo::session
