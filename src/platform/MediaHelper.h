#pragma once

#include "platform/ChildProcess.h"

#include <optional>
#include <string>

namespace halvo {

/// Where this system keeps the helper that reports what is playing, and how to call it. Main
/// thread.
class MediaHelper {
  public:
    virtual ~MediaHelper() = default;

    /// The folder with the program's resources; nothing when there is none.
    virtual std::optional<std::string> resourceFolder() const = 0;
    /// The names of the helper's files; both are the same where it is a single program.
    virtual std::string libraryName() const = 0;
    virtual std::string scriptName() const = 0;
    /// The command line with both files' paths and one word: "loop" or a command.
    virtual Command command(const std::string& script, const std::string& library,
                            const std::string& word) const = 0;
};

} // namespace halvo
