#pragma once

#include "macos/MacDirectories.h"
#include "posix/PosixFileSystem.h"

namespace halvo {

/// Files where macOS keeps a user's.
class MacFileSystem final : public PosixFileSystem {
  public:
    /// ~/Library/Application Support.
    std::optional<std::filesystem::path> applicationSupportDirectory() override {
        return halvo::applicationSupportDirectory();
    }
};

} // namespace halvo
