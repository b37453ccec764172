#include "linux/process/SyslogSystemLog.h"

#include <syslog.h>

namespace halvo {

SyslogSystemLog::SyslogSystemLog() {
    ::openlog("halvo", LOG_PID, LOG_USER);
}

void SyslogSystemLog::write(const std::string& line) {
    ::syslog(LOG_INFO, "%s", line.c_str());
}

} // namespace halvo
