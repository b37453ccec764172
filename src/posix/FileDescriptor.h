#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace halvo {

/// Owns a file descriptor and closes it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    /// Takes the descriptor over; a negative one means none.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    /// Closes it now. 0 or an errno: some file systems report a full disk only here.
    int close();

  private:
    int descriptor_ = -1;
};

/// The reading and the writing end of a pipe that no program inherits; nothing, and `errno`, when
/// the process has no descriptor left.
std::optional<std::pair<FileDescriptor, FileDescriptor>> makePipe();

bool isRegularFile(int descriptor);

/// Writes all bytes, in as many calls as it takes. False on the first error; see `errno`.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace halvo
