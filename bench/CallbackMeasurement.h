#pragma once

#include <nlohmann/json_fwd.hpp>

namespace halvo::bench {

/// How long the render callback takes, in microseconds: "p50", "p99" and "p99.9" by block size.
/// The engine's own path from the ring to the output, in a real-time thread where that is allowed,
/// woken for each block as by a sound server; each time the driver's part has just been written.
nlohmann::ordered_json measureCallback();

} // namespace halvo::bench
