#pragma once

#include <nlohmann/json_fwd.hpp>

#include <expected>
#include <string>

namespace halvo::bench {

/// What the application and the driver take in a private sound session at a quantum of 1024. Two
/// objects: "idle", while nothing plays, and "playing", with the panel closed. Takes most of a
/// minute. What failed as a sentence. Needs a QCoreApplication.
std::expected<nlohmann::ordered_json, std::string> measureSession();

} // namespace halvo::bench
