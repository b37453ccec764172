#pragma once

#include "session/SpawnedProgram.h"

#include <expected>
#include <memory>
#include <string>

namespace halvo::session {

/// Cleans up behind a session when its owner lets go of this or is gone, however it went: kills
/// what still runs with the session's directory in its environment, removes the directory and the
/// ring.
class SessionCleanup {
  public:
    static std::expected<std::unique_ptr<SessionCleanup>, std::string>
    start(const std::string& directory, const std::string& ringName);
    /// Returns when everything is clean.
    ~SessionCleanup();
    SessionCleanup(const SessionCleanup&) = delete;
    SessionCleanup& operator=(const SessionCleanup&) = delete;

  private:
    SessionCleanup(int pipe, std::unique_ptr<SpawnedProgram> program);

    int pipe_;
    std::unique_ptr<SpawnedProgram> program_;
};

} // namespace halvo::session
