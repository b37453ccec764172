#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace halvo::tools {

/// A file that is written beside its place and takes it when it is complete. What is not committed
/// is removed, so that the place holds the old file or the new one.
class PendingFile {
  public:
    enum class Existing { keep, replace };

    /// Opens a temporary file for what is to become `target`; a symbolic link stays and what it
    /// stands for is meant. The error is a sentence about `target`.
    static std::expected<PendingFile, std::string> create(const std::filesystem::path& target);
    PendingFile(PendingFile&& other) noexcept;
    PendingFile& operator=(PendingFile&&) = delete;
    ~PendingFile();

    /// Open for reading and writing, with the mode that new files get.
    int descriptor() const { return descriptor_; }

    /// Closes the file and puts it in place. `keep` fails, without a gap in which it could be
    /// missed, when a file is there by then. Gives nothing when it worked, else a sentence.
    std::optional<std::string> commit(Existing existing);

  private:
    PendingFile(std::filesystem::path target, std::filesystem::path place,
                std::filesystem::path temporary, int descriptor);

    std::filesystem::path target_; ///< as it was named
    std::filesystem::path place_;  ///< behind all symbolic links
    std::filesystem::path temporary_;
    int descriptor_;
};

/// "cannot write …: why", and what to do about it where there is an answer.
std::string cannotWrite(const std::filesystem::path& target, int error);

} // namespace halvo::tools
