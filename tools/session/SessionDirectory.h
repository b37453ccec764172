#pragma once

#include "session/SpawnedProgram.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace halvo::session {

/// A new directory and a ring's name that goes with it. When this is destroyed or its process ends,
/// even by SIGKILL, a program of its own cleans up: it kills what still runs with the directory in
/// its environment and removes the directory and the ring.
class SessionDirectory {
  public:
    /// Makes it in `base`; if that is empty, in the temporary directory.
    static std::expected<std::unique_ptr<SessionDirectory>, std::string>
    create(std::filesystem::path base = {});
    /// Returns when the cleanup is done.
    ~SessionDirectory();
    SessionDirectory(const SessionDirectory&) = delete;
    SessionDirectory& operator=(const SessionDirectory&) = delete;

    const std::string& path() const { return path_; }
    /// Unique to the directory.
    std::string ringName() const { return "/halvo_session_" + path_.substr(path_.size() - 6); }

  private:
    explicit SessionDirectory(std::string path) : path_(std::move(path)) {}

    std::string path_;
    FileDescriptor pipe_; ///< the cleaning program waits for its end
    std::unique_ptr<SpawnedProgram> cleanup_;
};

} // namespace halvo::session
