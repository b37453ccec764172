#pragma once

#include "linux/pipewire/PipeWireObserver.h"

#include <string>

namespace halvo {

class MainQueue;
class PipeWireConnection;
class SystemLog;

/// Says in the system log and on standard error when the sound server is missing, gone or back.
/// Main thread, but for what it hears from the connection.
class ServerReport final : public PipeWireObserver {
  public:
    /// Everything passed in must outlive it; the queue drops what is still under way at the end.
    ServerReport(PipeWireConnection& connection, MainQueue& queue, SystemLog& log);
    ~ServerReport() override;
    ServerReport(const ServerReport&) = delete;
    ServerReport& operator=(const ServerReport&) = delete;

    void serverConnected() override;
    void serverDisconnected() override;

  private:
    void reportLater(const char* message);
    void report(const std::string& message);

    PipeWireConnection& connection_;
    MainQueue& queue_;
    SystemLog& log_;
    bool isMissing_ = false; ///< the connection's thread, or its lock
};

} // namespace halvo
