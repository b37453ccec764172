#pragma once

#include "application/Tone.h"
#include "platform/VirtualOutput.h"
#include "session/Player.h"
#include "session/PrivateSession.h"
#include "session/Recorder.h"

#include <memory>
#include <string>
#include <vector>

namespace halvo::test {

inline constexpr const char* kVirtualSink = kVirtualDeviceUID;
inline constexpr const char* kSpeakers = "acc.a";
inline constexpr const char* kHeadphones = "acc.b";

/// Outputs for a session whose manager keeps the speakers' level, which begins at `own`, by itself.
session::Options rememberedSpeakers(std::vector<float> own);

/// A private session with the real driver and the real application in it.
class ApplicationScene {
  public:
    explicit ApplicationScene(session::Options options = {});

    session::PrivateSession& session() { return *session_; }
    session::SpawnedProgram& application() { return *application_; }
    session::SpawnedProgram& driver() { return *driver_; }

    void startDriver();
    void stopDriver() { driver_.reset(); }
    /// `extra`: more of its environment, NAME=VALUE.
    void startApplication(const std::vector<std::string>& extra = {});
    /// Driver and application, and sound can flow.
    void startBoth();
    /// Whether the application has finished its start and the virtual device is the default.
    bool isReady();
    /// Asks over the bus for a normal quit; the exit status, if it ended in time.
    std::optional<int> quit();

    /// Presets for the next start of the application; the first one is active. `bands` in dB.
    void writePresets(const std::vector<float>& bands, float preamp = 0);
    /// The saved settings, as text.
    std::string savedSettings() const;
    std::string debugLog() const;
    std::string standardOutput() const { return application_->standardOutput(); }
    bool prints(const std::string& text);
    /// Whether the session record of the application holds anything.
    bool hasDirtyRecord() const;
    /// The programs of this session by that name.
    std::vector<int> processes(const std::string& program) const;
    /// The process of the application's session guard, once there is exactly one.
    int guard();

    std::unique_ptr<session::Recorder> record(const std::string& nodeName);
    std::unique_ptr<session::Player> play(std::vector<float> samples);

  private:
    std::string read(const std::string& path) const;

    std::unique_ptr<session::PrivateSession> session_;
    std::unique_ptr<session::SpawnedProgram> driver_;
    std::unique_ptr<session::SpawnedProgram> application_;
};

} // namespace halvo::test
