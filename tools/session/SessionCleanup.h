#pragma once

#include "session/SpawnedProgram.h"

#include <expected>
#include <memory>
#include <string>

namespace halvo::session {

/// Cleans up after a session when this is destroyed or its process ends, even by SIGKILL: kills
/// what still runs with the session's directory in its environment, removes the directory and the
/// ring.
class SessionCleanup {
  public:
    static std::expected<std::unique_ptr<SessionCleanup>, std::string>
    start(const std::string& directory, const std::string& ringName);
    /// Returns when the cleanup is done.
    ~SessionCleanup();
    SessionCleanup(const SessionCleanup&) = delete;
    SessionCleanup& operator=(const SessionCleanup&) = delete;

  private:
    SessionCleanup(FileDescriptor pipe, std::unique_ptr<SpawnedProgram> program);

    FileDescriptor pipe_; ///< the program waits for its end
    std::unique_ptr<SpawnedProgram> program_;
};

} // namespace halvo::session
