#pragma once

#include "platform/MediaHelper.h"

#include <filesystem>

namespace halvo {

/// The program halvo-media-helper: beside the application, in its installation, or where the
/// environment variable HALVO_MEDIA_HELPER says (set but empty: there is none). Script and library
/// are this one program.
class LinuxMediaHelper final : public MediaHelper {
  public:
    explicit LinuxMediaHelper(std::filesystem::path executableDirectory);

    std::optional<std::string> resourceFolder() const override;
    std::string libraryName() const override;
    std::string scriptName() const override { return libraryName(); }
    Command command(const std::string& script, const std::string& library,
                    const std::string& word) const override;

  private:
    std::filesystem::path executableDirectory_;
};

} // namespace halvo
