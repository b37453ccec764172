#pragma once

#include "posix/FileDescriptor.h"

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <system_error>

namespace halvo {

/// A file that is written beside its place and moves there when it is complete, so that the place
/// always holds the old file or the new one. Without a commit nothing changes. Any thread.
class AtomicFile {
  public:
    enum class Existing { keep, replace };

    /// Opens a temporary file for what is to become `target`; a symbolic link stays one and its
    /// target is meant. The error is a sentence about `target`.
    static std::expected<AtomicFile, std::string> create(const std::filesystem::path& target);
    AtomicFile(AtomicFile&& other) noexcept;
    AtomicFile& operator=(AtomicFile&&) = delete;
    ~AtomicFile();

    /// Open for reading and writing, with the mode that new files get.
    int descriptor() const { return file_.get(); }

    /// Closes the file and moves it to its place. `keep` fails when a file is there by then,
    /// `replace` when what is there is no regular file; a replaced file's mode stays. Returns
    /// nothing when it worked, else a sentence.
    std::optional<std::string> commit(Existing existing);

    /// The contents of a regular file; nothing when it is none, cannot be read or is longer than
    /// `maximumSize` bytes. Never waits.
    static std::optional<std::string> read(const std::filesystem::path& path,
                                           std::size_t maximumSize);

    /// Replaces a file, mode 0600. Where no file can be made beside it, or none can take its place,
    /// it is overwritten in place. Does not wait for the disk.
    static bool write(const std::filesystem::path& path, const std::string& contents);

    /// The file that `path` stands for after all symbolic links at its end, whether it exists or
    /// not; nothing when they lead in a circle.
    static std::optional<std::filesystem::path> resolve(std::filesystem::path path);

    /// Renames a file to "<name>.unreadable-<date>", a name that is free, and returns it. A
    /// symbolic link stays and its target is renamed, if that is a regular file.
    static std::expected<std::filesystem::path, std::error_code>
    setAside(const std::filesystem::path& path);

  private:
    AtomicFile(const std::filesystem::path& place, mode_t mode);
    int moveToPlace(Existing existing);

    std::filesystem::path target_;    ///< as the caller named it
    std::filesystem::path place_;     ///< after all symbolic links
    std::filesystem::path temporary_; ///< empty once it is moved
    FileDescriptor file_;
    int error_ = 0; ///< why there is no file
};

/// "cannot write …: why", and what to do about it where there is an answer.
std::string cannotWrite(const std::filesystem::path& target, int error);

} // namespace halvo
