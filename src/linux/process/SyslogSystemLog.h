#pragma once

#include "platform/SystemLog.h"

namespace halvo {

/// Lines in the system's log, or nowhere when the system has none. Any thread.
class SyslogSystemLog final : public SystemLog {
  public:
    SyslogSystemLog();
    void write(const std::string& line) override;
};

} // namespace halvo
