#pragma once

#include "platform/StandardOutput.h"

namespace halvo {

/// The process's own standard output, unbuffered. A reader that has gone away does no harm, and
/// the process's handling of signals stays as it is. Main thread.
class ProcessStandardOutput final : public StandardOutput {
  public:
    void print(const std::string& line) override;
};

} // namespace halvo
