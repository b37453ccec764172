#include "SessionRestore.h"

#include "app/AppDelegate.h"
#include "app/SavedSession.h"
#include "linux/files/JsonUserDefaults.h"
#include "linux/files/SessionLock.h"
#include "linux/files/XdgFileSystem.h"
#include "linux/pipewire/PipeWireAudioHardware.h"
#include "linux/pipewire/PipeWireConnection.h"
#include "loudness/LevelScale.h"
#include "loudness/LoudnessGuard.h"
#include "loudness/RaisedDevicesRecord.h"
#include "platform/VirtualOutput.h"

#include <algorithm>
#include <optional>
#include <thread>

namespace halvo {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The dead application's lock is released an instant after its pipe closes.
constexpr milliseconds kLongestLock{200};
constexpr milliseconds kPause{50};
/// The session manager saves levels and default one second after a change; a server that dies
/// before comes back with the old ones. Twice that.
constexpr milliseconds kManagersDelay{2000};

/// Here nobody listens to the hardware.
class NoQueue final : public MainQueue {
  public:
    void async(Work /*work*/) override {}
    void after(Duration /*delay*/, Work /*work*/) override {}
    Subscription afterCancellable(Duration /*delay*/, Work /*work*/) override { return {}; }
    Subscription every(Duration /*period*/, Work /*work*/) override { return {}; }
};

RaisedDevicesRecord recorded() {
    static XdgFileSystem files;
    return {files, {raisedDevicesPath(), spareRaisedDevicesPath()}, nullptr};
}

bool hasSavedSession() {
    const auto defaults = JsonUserDefaults::readOnly(JsonUserDefaults::standardPath());
    return SavedSession::load(defaults).has_value();
}

bool hasWork(SessionRestore::Occasion occasion) {
    const auto record = recorded();
    if (occasion != SessionRestore::Occasion::crash) return record.isOpen();
    return hasSavedSession() || !record.isEmpty();
}

} // namespace

SessionRestore::Result SessionRestore::run(Occasion occasion, milliseconds longest) {
    if (!hasWork(occasion)) return Result::done;
    const auto found = recorded();
    const auto connection = PipeWireConnection::create();
    if (!connection) return Result::failed;
    NoQueue queue;
    PipeWireAudioHardware server(*connection, queue);
    bool isRepeated = false;
    bool isSetAgain = false;
    auto end = Clock::now() + longest;
    for (; Clock::now() < end; std::this_thread::sleep_for(kPause)) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (!connection->waitUntilReady(left)) continue;
        // Released between attempts: an application that starts meanwhile takes it and restores
        // all.
        auto lock = SessionLock::take(SessionLock::standardPath(), kLongestLock);
        if (!lock) return Result::running;
        // What it found raised stands in no other place any more.
        if (isRepeated) found.saveAnew();
        if (!restore(server, occasion)) continue;
        lock.reset();
        // A session manager that has just started may have set its own last level meanwhile. Once
        // more then; what is louder after that is somebody's wish.
        const bool isDone = isWrittenDown(*connection, server, occasion);
        const bool isLast = isSetAgain || occasion == Occasion::ending;
        if (isDone && (isLast || !isUndone(server))) {
            confirm();
            return Result::done;
        }
        isSetAgain = isDone;
        isRepeated = true;
        end = Clock::now() + longest;
    }
    return Result::failed;
}

bool SessionRestore::restore(AudioServer& server, Occasion occasion) {
    if (occasion == Occasion::ending) return true;
    const auto hardware = LoudnessGuard::forRestore(server, recorded());
    if (occasion == Occasion::crash) {
        AppDelegate::handleTermination(
            *hardware, JsonUserDefaults::readOnly(JsonUserDefaults::standardPath()));
    }
    return hardware->releaseDefaultOutput();
}

bool SessionRestore::isWrittenDown(PipeWireConnection& connection, AudioServer& server,
                                   Occasion occasion) {
    // At the beginning of a session it brings back the default and the levels that it has kept.
    const bool isWatching = occasion == Occasion::session;
    PipeWireConnection::Lock lock(connection);
    // Ends early when the server goes.
    (void)lock.waitFor([&] { return isWatching && isUndone(server); }, kManagersDelay);
    return connection.isReady();
}

bool SessionRestore::isUndone(AudioServer& server) {
    if (server.configuredDefault() == kVirtualDeviceUID) return true;
    const auto record = recorded();
    return std::ranges::any_of(record.devices, [&server](const auto& entry) {
        const auto id = server.deviceForUID(entry.first);
        const auto level = id ? server.level(*id) : std::nullopt;
        return level && isAbove(*level, entry.second.found);
    });
}

void SessionRestore::confirm() {
    const auto lock = SessionLock::take(SessionLock::standardPath(), kLongestLock);
    if (!lock) return; // an application has its own record by now
    auto record = recorded();
    record.confirm();
    if (!hasSavedSession()) { // an orderly end: nothing is left to tell the next start
        std::erase_if(record.devices, [](const auto& entry) { return !entry.second.isMoved; });
        record.origin.reset();
    }
    (void)record.save(); // the next start then puts right what is right already
}

} // namespace halvo
