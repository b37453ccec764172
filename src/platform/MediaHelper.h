#pragma once

#include "platform/ChildProcess.h"

#include <optional>
#include <string>

namespace halvo {

/// Where the helper that reports what is playing lies, and how it is called on this system.
/// Main thread.
class MediaHelper {
  public:
    virtual ~MediaHelper() = default;

    /// The folder with the program's resources; nothing when there is none.
    virtual std::optional<std::string> resourceFolder() const = 0;
    /// The files that the helper consists of, by name; where it is one program, both are its name.
    virtual std::string libraryName() const = 0;
    virtual std::string scriptName() const = 0;
    /// The call with both files' paths and one word: "loop", or that of a command.
    virtual Command command(const std::string& script, const std::string& library,
                            const std::string& word) const = 0;
};

} // namespace halvo
