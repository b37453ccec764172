#pragma once

#include "platform/StandardOutput.h"

namespace halvo {

/// The process's standard output, unbuffered. A reader that has closed the pipe does no harm, and
/// the process's signal handling stays as it is. Main thread.
class ProcessStandardOutput final : public StandardOutput {
  public:
    void print(const std::string& line) override;
};

} // namespace halvo
