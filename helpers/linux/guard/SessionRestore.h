#pragma once

#include <chrono>

namespace halvo {

class AudioServer;
class PipeWireConnection;

/// Restores devices and default output in place of an application that has ended, from the saved
/// records alone. One thread.
class SessionRestore {
  public:
    enum class Occasion {
        crash,   ///< the application has died: devices and default are restored
        ending,  ///< it has restored them itself: the session manager has to keep that
        session, ///< the sound server has started: the last session may have ended before that
    };
    enum class Result {
        done,    ///< nothing is left to restore
        running, ///< an application runs again and does it itself
        failed,  ///< no server, or one that refuses
    };

    /// Tries until `longest` has passed: a server that crashed comes back, and a session manager
    /// takes its time. Stays two seconds longer than it takes, until the session manager has kept
    /// the levels, and corrects one that it sets meanwhile. After a crash, and while the saved
    /// session is there, the records stay for the application's next start.
    static Result run(Occasion occasion, std::chrono::milliseconds longest);

  private:
    static bool restore(AudioServer& server, Occasion occasion);
    /// Waits; false when the server went before its session manager will have kept the levels.
    static bool isWrittenDown(PipeWireConnection& connection, AudioServer& server,
                              Occasion occasion);
    /// Whether a device is louder than recorded, or the virtual one the default again.
    static bool isUndone(AudioServer& server);
    static void confirm();
};

} // namespace halvo
