#pragma once

#include <chrono>

namespace halvo {

class AudioServer;
class PipeWireConnection;

/// Restores devices and default output in place of an application that has died, from the saved
/// records alone; these stay for the application's next start. One thread.
class SessionRestore {
  public:
    enum class Result {
        done,    ///< nothing is left to restore
        running, ///< an application runs again and does it itself
        failed,  ///< no server, or one that refuses
    };

    /// Tries until `longest` has passed: a server that crashed comes back, and a session manager
    /// takes its time. Stays two seconds longer than it takes, in case the server dies just then or
    /// its session manager sets a level that it had kept.
    static Result run(std::chrono::milliseconds longest);

  private:
    static bool hasRecord();
    static bool restoreDevice(AudioServer& server);
    /// Waits; false when the server went before its session manager will have kept the levels.
    static bool isWrittenDown(PipeWireConnection& connection);
    static bool isLouderThanRecorded(AudioServer& server);
};

} // namespace halvo
