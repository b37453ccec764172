#pragma once

#include "platform/SystemLog.h"

namespace halvo {

/// The unified log. Any thread but the render thread.
class MacSystemLog final : public SystemLog {
  public:
    void write(const std::string& line) override;
};

} // namespace halvo
