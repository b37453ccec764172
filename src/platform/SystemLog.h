#pragma once

#include <string>

namespace halvo {

/// The system's log. The text is never interpreted as a format. Any thread but the render thread.
class SystemLog {
  public:
    virtual ~SystemLog() = default;
    virtual void write(const std::string& line) = 0;
};

} // namespace halvo
