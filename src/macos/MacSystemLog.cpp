#include "macos/MacSystemLog.h"

#include <os/log.h>

namespace halvo {

void MacSystemLog::write(const std::string& line) {
    // Without "public" the log would redact the text.
    os_log(OS_LOG_DEFAULT, "%{public}s", line.c_str());
}

} // namespace halvo
