#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace halvo::AtomicFile {

/// The contents of a regular file; nothing when it is none, cannot be read or is longer than
/// `maximumSize` bytes. Never waits. Any thread.
std::optional<std::string> read(const std::filesystem::path& path, std::size_t maximumSize);

/// Replaces a file, mode 0600: afterwards it holds the old contents or the new ones. A symbolic
/// link stays one and its target is replaced. Where no file can be made beside it, or none can take
/// its place, it is written over in place. Does not wait for the disk. Any thread.
bool write(const std::filesystem::path& path, const std::string& contents);

/// Renames a file to "<name>.unreadable-<date>", a name that is free, and returns it. A symbolic
/// link stays and its target is renamed, if that is a regular file. Any thread.
std::expected<std::filesystem::path, std::error_code> setAside(const std::filesystem::path& path);

/// The file that `path` stands for after all symbolic links at its end, whether it exists or not;
/// nothing when they lead in a circle. Any thread.
std::optional<std::filesystem::path> resolve(std::filesystem::path path);

} // namespace halvo::AtomicFile
