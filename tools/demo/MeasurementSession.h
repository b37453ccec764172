#pragma once

#include "Programs.h"
#include "StereoSound.h"
#include "session/PrivateSession.h"
#include "session/Recorder.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace halvo::demo {

/// Where the application is measured: a private sound session with simulated speakers, and the
/// driver with its virtual output. One thread.
class MeasurementSession {
  public:
    static constexpr const char* kSpeakers = "acc.a";
    static constexpr const char* kVirtualOutput = "HalvoVirtualOutput_UID";

    /// Ready when the virtual output has appeared; else a sentence about what went wrong.
    static std::expected<std::unique_ptr<MeasurementSession>, std::string> open(Programs programs);

    session::PrivateSession& privateSession() { return *session_; }
    const Programs& programs() const { return programs_; }
    int driverPid() const { return driver_->pid(); }

    /// Where programs in the session keep their data and their settings, and write temporary files.
    std::string dataHome() const { return session_->directory() + "/data"; }
    std::string configHome() const { return session_->directory() + "/config"; }
    std::string temporaryFolder() const { return session_->directory() + "/tmp"; }
    /// Where the session bus listens.
    std::string busSocket() const { return session_->directory() + "/run/bus"; }

    /// Writes a sound and a little silence into the session's folder for `play`; gives its path.
    std::expected<std::string, std::string> prepare(const std::string& name,
                                                    const StereoSound& sound);
    /// Plays a file to its end into the default output with the system's ordinary player, and calls
    /// `whilePlaying` twenty times a second; what went wrong as a sentence.
    std::expected<void, std::string> play(const std::string& path,
                                          const std::function<void()>& whilePlaying);
    /// Starts to play a file into the virtual output itself, whatever the default is.
    std::expected<std::unique_ptr<session::SpawnedProgram>, std::string>
    startPlayingIntoVirtualOutput(const std::string& path);
    /// Begins to record what an output plays; ready when frames arrive.
    std::expected<std::unique_ptr<session::Recorder>, std::string> record(const std::string& node);

  private:
    MeasurementSession(Programs programs, std::unique_ptr<session::PrivateSession> session)
        : programs_(std::move(programs)), session_(std::move(session)) {}
    std::expected<void, std::string> startDriver();

    Programs programs_;
    std::unique_ptr<session::PrivateSession> session_;
    std::unique_ptr<session::SpawnedProgram> driver_;
};

} // namespace halvo::demo
