#pragma once

#include "platform/VirtualOutput.h"
#include "unit/loudness/LoudnessGuardFixture.h"

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace halvo::test {

constexpr const char* kAmplifier = "acc.usb"; ///< plugged in by an event only

/// A kind of sound server with devices of one kind.
struct ServerKind {
    const char* name;
    FakeServerBehaviour behaviour;
    bool hasPorts;
    bool isRestoredAtLogin; ///< by a program that starts with the session; else by the application
};

/// As gtest shows it.
void PrintTo(const ServerKind& kind, std::ostream* stream);
std::vector<ServerKind> allServerKinds();

/// Everything that happens to a machine, and what must hold whatever it is: music gets louder only
/// where a person asks for it, and after an end every device is at its own level. Each event comes
/// to rest before it returns. Begins with speakers, headphones and the driver; music plays.
class LoudnessWorld {
  public:
    /// What ends first when a person logs out.
    enum class First : std::uint8_t { application, server };

    explicit LoudnessWorld(const ServerKind& kind);

    LoudnessMachine machine;
    FakeAudioServer& server = machine.server;

    // The application.
    void start();
    void end(End end);
    bool isRunning() const { return machine.delegate != nullptr; }
    /// The last end was a kill that nobody has put right so far.
    bool isLeftRaised() const { return isLeftRaised_; }

    // A person at the panel, at the desktop and its keys, and in some mixer.
    void pick(const std::string& uid);
    void turnInPanel(float volume);
    void turn(const DeviceLevel& level); ///< of the virtual device
    void choose(const std::string& uid);
    void setLevel(const std::string& uid, float both);
    void setMute(const std::string& uid, bool muted);

    // The machine.
    void plugIn(const std::string& uid, float both);
    void unplug(const std::string& uid);
    void plugAgain(const std::string& uid);
    /// The virtual device returns with another rate: with its level, or at full scale.
    enum class Return : std::uint8_t { asBefore, atFullScale };
    void changeRate(Return level);
    void rebuildRing();
    void killDriver();
    void restartDriver();
    /// Devices return in that order; what is left out returns after them.
    void restartServer(const std::vector<std::string>& order);
    void logOut(End end, First first, std::chrono::milliseconds delay);
    /// Devices return; what starts with the session puts them right before any program plays.
    void logIn();

    /// After an end: each device that is there is at its own level, with balance and mute, the
    /// default is that one, and the music is heard at its level.
    void expectGivenBack(const std::string& defaultUID);
    /// The same for the default that was the original one, or taken for it, else the one in use;
    /// else it is any real one.
    void expectGivenBack();

    bool isPresent(const std::string& uid) const { return server.sink(uid) != nullptr; }
    bool isKnown(const std::string& uid) const { return own_.contains(uid); }
    const DeviceLevel& own(const std::string& uid) const { return own_.at(uid); }

  private:
    DeviceLevel level(const std::string& uid, float left, float right) const;
    void limit(float asked = 0);
    void limitAnyChannel(float asked = 0);
    void rest();
    void restAsked(float asked);
    void rememberUse();
    float ownLoudness(const std::string& uid) const;
    std::string firstReal(const std::string& without = kVirtualDeviceUID);
    float fallbackLoudness(const std::string& without);
    std::string expectedDefault();
    float endLoudness();
    bool isAtOwnLevel(const std::string& uid) const;

    ServerKind kind_;
    std::map<std::string, DeviceLevel> own_;
    LoudnessMachine::Heard loudness_{}; ///< of the music, when it was last heard
    std::vector<std::string> plugged_;  ///< when the session ended, in order
    std::string original_;              ///< the default that a person chose, by UID
    std::string followed_;              ///< the one that the application takes for it
    std::string used_;                  ///< where it played
    bool isLeftRaised_ = false;
};

} // namespace halvo::test
