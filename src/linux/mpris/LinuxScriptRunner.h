#pragma once

#include "platform/ScriptRunner.h"

namespace halvo {

/// Runs the player scripts with the MPRIS players of the session bus, and returns what the scripts
/// would. "Spotify" is the player of that name; "Music" is any other, playing ones first. Supports
/// only these scripts. Any background thread; each run has its own connection and ends within a few
/// seconds.
class LinuxScriptRunner final : public ScriptRunner {
  public:
    std::expected<std::optional<std::string>, ScriptError> run(const std::string& source) override;
};

} // namespace halvo
