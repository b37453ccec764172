#pragma once

#include "linux/files/XdgDirectories.h"
#include "posix/PosixFileSystem.h"

namespace halvo {

/// Files where the XDG base directories say.
class XdgFileSystem final : public PosixFileSystem {
  public:
    /// $XDG_DATA_HOME, by default ~/.local/share.
    std::optional<std::filesystem::path> applicationSupportDirectory() override {
        return dataDirectory();
    }
};

} // namespace halvo
