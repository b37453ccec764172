#pragma once

#include "platform/FileSystem.h"

namespace halvo {

/// The user's files; where the application's data lie is each system's own matter. Keeps no state;
/// never waits for a pipe or device that lies where a file is expected.
class PosixFileSystem : public FileSystem {
  public:
    /// $TMPDIR, or /tmp.
    std::filesystem::path temporaryDirectory() override;

    bool exists(const std::filesystem::path& path) override;
    bool createDirectory(const std::filesystem::path& path) override;
    std::optional<std::string> read(const std::filesystem::path& path) override;
    bool write(const std::filesystem::path& path, const std::string& contents) override;
    /// Refuses what is not this user's own plain file under this one name.
    bool append(const std::filesystem::path& path, const std::string& contents) override;
    /// To "<name>.unreadable-<date>".
    bool setAside(const std::filesystem::path& path) override;
    bool remove(const std::filesystem::path& path) override;
};

} // namespace halvo
