#pragma once

#include "platform/ScriptRunner.h"

namespace halvo {

/// Answers the questions and commands for players from the players of the session bus, in the form
/// that the scripts promise. "Spotify" is the player of that name; "Music" stands for any other,
/// one that plays first. Knows just these scripts. Any background thread; each run has a connection
/// of its own and is over within a few seconds.
class LinuxScriptRunner final : public ScriptRunner {
  public:
    std::expected<std::optional<std::string>, ScriptError> run(const std::string& source) override;
};

} // namespace halvo
