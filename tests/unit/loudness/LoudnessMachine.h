#pragma once

#include "app/AppDelegate.h"
#include "fake/FakeAudioServer.h"
#include "fake/FakePlatform.h"
#include "loudness/LoudnessGuard.h"
#include "loudness/OutputGate.h"
#include "loudness/RaisedDevicesRecord.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace halvo::test {

/// How an application ends.
enum class End : std::uint8_t { quit, signal, killUnderGuard, kill };

/// The application on its guard on a server in memory, and ears at the speakers: whatever happens,
/// no program may be heard louder, in either channel, than the limit that holds for it, which is
/// what was heard of it when things were last settled. Levels are linear amplitudes.
class LoudnessMachine {
  public:
    using Heard = std::array<float, 2>;
    static constexpr const char* kRecord = "/state/raised-devices.json";
    static constexpr const char* kSpareRecord = "/run/raised-devices.json";
    static constexpr const char* kSettings =
        "/state"; ///< folder of the record, and of the settings

    LoudnessMachine();
    ~LoudnessMachine();

    FakePlatform fake;
    FakeAudioServer server{fake.mainQueue};
    OutputGate gate;
    std::optional<LoudnessGuard> guard;
    std::shared_ptr<AppDelegate> delegate;

    void plugDriver(); ///< the virtual device, at full scale, and its ring
    void start();      ///< the application; everything that follows is still to come
    void launch();     ///< starts and settles
    void quit();       ///< and the session manager has kept what was given back
    void keep();       ///< the session manager keeps what was given back
    void terminate();  ///< SIGTERM
    void crash();
    /// Crashes, and the session guard does what it is there for; whether it came to an end.
    bool crashUnderGuard();
    /// The same ends, at once: what follows from them is still to come.
    void endNow(End end);
    /// What starts with the session puts right what the last one left.
    void restoreAtLogin();
    /// From here on the folders take nothing, which the settings notice, too; none: they do again.
    void fill(std::set<std::filesystem::path> folders);

    /// Lets time pass and listens every millisecond.
    void pass(std::chrono::milliseconds time);
    /// Lets everything come to rest; what is heard then is the limit from here on.
    void settle();
    /// The limit for a program whose loudness another person or program is about to change.
    void allow(const std::string& stream, float limit) { allow(stream, Heard{limit, limit}); }
    void allow(const std::string& stream, Heard limit) { limits_[stream] = limit; }

    Heard heard(const std::string& stream) const;
    DeviceLevel level(const std::string& uid) const { return server.sink(uid)->level; }
    RaisedDevicesRecord record() {
        return {fake.fileSystem, {kRecord, kSpareRecord}, &fake.systemLog};
    }
    bool hasRecord() { return fake.fileSystem.exists(kRecord); }

  private:
    Heard heard(const FakeAudioServer::Stream& stream) const;
    void listen();
    void handleSignal();
    bool restoreAfterKill();
    void die(); ///< the process is gone, nothing was tidied up
    FakeUserDefaults settingsOnDisk() const;

    std::optional<FakeUserDefaults> oldSettings_; ///< on disk, while it takes nothing
    std::map<std::string, Heard> limits_;         ///< by stream
};

constexpr const char* kMusic = "music"; ///< plays from the start, into the default

DeviceLevel stereo(float left, float right);
DeviceLevel stereo(float both);
DeviceLevel muted(float both);

} // namespace halvo::test
