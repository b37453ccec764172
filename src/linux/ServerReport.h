#pragma once

#include "linux/pipewire/PipeWireObserver.h"

#include <string>

namespace halvo {

class MainQueue;
class PipeWireConnection;
class SystemLog;

/// Reports in the system log and on standard error when the sound server is missing, lost or back.
/// Main thread, except for the connection's events.
class ServerReport final : public PipeWireObserver {
  public:
    /// All arguments must outlive it; the queue drops pending work at the end.
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
    bool isMissing_ = false; ///< connection's thread, or its lock
};

} // namespace halvo
