#include "app/DiagnosticLog.h"

#include "platform/FileSystem.h"
#include "platform/SystemLog.h"

namespace halvo {

void DiagnosticLog::write(const std::string& message) {
    const std::string line = "Halvo: " + message;
    log_.write(line);
    // A log that cannot be written must not disturb what it reports on.
    (void)files_.append(files_.temporaryDirectory() / "halvo_debug.log", line + "\n");
}

} // namespace halvo
