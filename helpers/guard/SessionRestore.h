#pragma once

#include "RestoreHost.h"

#include <chrono>

namespace halvo {

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

    /// The host must outlive this.
    explicit SessionRestore(RestoreHost& host) : host_(host) {}

    /// Tries until `longest` has passed: a server that crashed comes back, and a session manager
    /// takes its time. Stays two seconds longer than it takes, until the levels are kept, and
    /// corrects one that a session manager sets meanwhile. After a crash, and while the saved
    /// session is there, the records stay for the application's next start.
    Result run(Occasion occasion, std::chrono::milliseconds longest);

  private:
    RaisedDevicesRecord recorded();
    bool hasSavedSession();
    bool hasWork(Occasion occasion);
    bool restore(Occasion occasion);
    /// Waits; false when the server went before the levels will have been kept.
    bool isWrittenDown(Occasion occasion);
    /// Whether a device is louder than recorded, or the virtual one the default again.
    bool isUndone();
    void confirm();

    RestoreHost& host_;
};

} // namespace halvo
