#pragma once

#include <expected>
#include <optional>
#include <string>

namespace halvo {

/// Why a script gave no answer.
struct ScriptError {
    int number = 0; ///< the scripting system's own; 0 when it gives none
    std::string description;
};

/// Asks other programs through the desktop's scripting. May block: background threads only.
class ScriptRunner {
  public:
    virtual ~ScriptRunner() = default;

    /// The script's result as text; nothing when it has none or cannot be parsed.
    virtual std::expected<std::optional<std::string>, ScriptError>
    run(const std::string& source) = 0;
};

} // namespace halvo
