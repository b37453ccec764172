#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

/// The user's files. Contents are bytes. Any thread, as long as no two write the same file and
/// nobody changes the environment.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    /// Where the user's application data lives; nothing when the system names no such place.
    virtual std::optional<std::filesystem::path> applicationSupportDirectory() = 0;
    virtual std::filesystem::path temporaryDirectory() = 0;

    virtual bool exists(const std::filesystem::path& path) = 0;
    /// Creates the directory and what is missing above it.
    virtual bool createDirectory(const std::filesystem::path& path) = 0;
    virtual std::optional<std::string> read(const std::filesystem::path& path) = 0;
    /// Replaces the file: afterwards it holds the old contents or the new ones, never a part.
    virtual bool write(const std::filesystem::path& path, const std::string& contents) = 0;
    /// Adds to the end of a file, creating it if need be. Never follows a symbolic link.
    virtual bool append(const std::filesystem::path& path, const std::string& contents) = 0;
    /// Renames what cannot be read, so that its place is free; a symbolic link stays, the file that
    /// it leads to is renamed. False if it is still in place.
    virtual bool setAside(const std::filesystem::path& path) = 0;
    /// True when there is no such file afterwards, whether there was one or not.
    virtual bool remove(const std::filesystem::path& path) = 0;
};

} // namespace halvo
