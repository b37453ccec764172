#pragma once

#include "platform/FileSystem.h"

namespace halvo {

/// Files in the places that the XDG base directories name. Main thread only; never waits for a
/// pipe or device that lies where a file is expected.
class XdgFileSystem final : public FileSystem {
  public:
    /// $XDG_DATA_HOME, by default ~/.local/share.
    std::optional<std::filesystem::path> applicationSupportDirectory() override;
    /// $TMPDIR, by default /tmp.
    std::filesystem::path temporaryDirectory() override;

    bool exists(const std::filesystem::path& path) override;
    bool createDirectory(const std::filesystem::path& path) override;
    std::optional<std::string> read(const std::filesystem::path& path) override;
    bool write(const std::filesystem::path& path, const std::string& contents) override;
    /// Refuses what is not this user's own plain file under this one name.
    bool append(const std::filesystem::path& path, const std::string& contents) override;
    bool rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
};

} // namespace halvo
