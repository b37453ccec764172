#pragma once

#include <nlohmann/json_fwd.hpp>

namespace halvo::bench {

/// What a person waits for, and what the application takes, on a screen in memory with a tray. One
/// object "desktop": times in milliseconds, then the application's cost with the panel closed and
/// open. Takes three minutes. The process becomes part of that desktop. Throws std::runtime_error.
nlohmann::ordered_json measureDesktop();

} // namespace halvo::bench
