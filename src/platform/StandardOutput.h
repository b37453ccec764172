#pragma once

#include <string>

namespace halvo {

/// The process's standard output; each line is flushed when the call returns. Main thread.
class StandardOutput {
  public:
    virtual ~StandardOutput() = default;
    /// Writes `line` and a line break.
    virtual void print(const std::string& line) = 0;
};

} // namespace halvo
