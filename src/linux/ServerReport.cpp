#include "linux/ServerReport.h"

#include "linux/pipewire/PipeWireConnection.h"
#include "platform/MainQueue.h"
#include "platform/SystemLog.h"

#include <cstdio>
#include <utility>

namespace halvo {

ServerReport::ServerReport(PipeWireConnection& connection, MainQueue& queue, SystemLog& log)
    : connection_(connection), queue_(queue), log_(log) {
    const PipeWireConnection::Lock lock(connection_);
    isMissing_ = !connection_.isReady();
    if (isMissing_) {
        report("Halvo: No sound server; waiting. Please start PipeWire and WirePlumber");
    }
    connection_.add(*this);
}

ServerReport::~ServerReport() {
    const PipeWireConnection::Lock lock(connection_);
    connection_.remove(*this);
}

void ServerReport::serverConnected() {
    if (std::exchange(isMissing_, false)) reportLater("Halvo: Connected to the sound server");
}

void ServerReport::serverDisconnected() {
    if (!std::exchange(isMissing_, true)) {
        reportLater("Halvo: Lost the sound server; reconnecting…");
    }
}

void ServerReport::reportLater(const char* message) {
    queue_.async([this, message] { report(message); });
}

void ServerReport::report(const std::string& message) {
    log_.write(message);
    // Not on standard output, whose lines have a defined meaning.
    (void)std::fprintf(stderr, "%s\n", message.c_str());
}

} // namespace halvo
