#pragma once

#include <optional>
#include <string>

namespace halvo::demo {

/// Asks the application, on the session bus that listens at the socket `busSocket`, to quit in the
/// normal way. Gives nothing when it took the request, else what failed. Needs a QCoreApplication.
std::optional<std::string> requestQuit(const std::string& busSocket);

} // namespace halvo::demo
