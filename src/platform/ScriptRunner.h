#pragma once

#include <optional>
#include <string>

namespace halvo {

/// Asks other programs through the desktop's scripting. May block: background threads only.
class ScriptRunner {
  public:
    virtual ~ScriptRunner() = default;

    /// The script's answer as text; nothing when it fails.
    virtual std::optional<std::string> run(const std::string& source) = 0;
};

} // namespace halvo
