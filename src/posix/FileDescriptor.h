#pragma once

#include <string_view>
#include <utility>

namespace halvo {

/// Closes a file descriptor when it goes.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    /// Takes the descriptor over; a negative one stands for none.
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
    /// Closes it now. 0 or an error's number: some file systems tell only here of a full disk.
    int close();

  private:
    int descriptor_ = -1;
};

bool isRegularFile(int descriptor);

/// Writes all bytes, however many calls that takes. False on the first error; `errno` tells which.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace halvo
