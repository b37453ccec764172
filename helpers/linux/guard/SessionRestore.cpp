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

} // namespace

SessionRestore::Result SessionRestore::run(milliseconds longest) {
    if (!hasRecord()) return Result::done;
    XdgFileSystem files;
    const auto path = raisedDevicesPath();
    const auto record = files.read(path);
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
        if (isRepeated && record) (void)files.write(path, *record); // or the default alone
        if (!restoreDevice(server)) continue;
        lock.reset();
        // A session manager that has just started may have set its own last level meanwhile. Once
        // more then; what is louder after that is somebody's wish.
        const bool isDone = isWrittenDown(*connection);
        if (isDone && (isSetAgain || !isLouderThanRecorded(server))) return Result::done;
        isSetAgain = isDone;
        isRepeated = true;
        end = Clock::now() + longest;
    }
    return Result::failed;
}

bool SessionRestore::isWrittenDown(PipeWireConnection& connection) {
    PipeWireConnection::Lock lock(connection);
    (void)lock.waitFor([] { return false; }, kManagersDelay); // ends early when the server goes
    return connection.isReady();
}

bool SessionRestore::isLouderThanRecorded(AudioServer& server) {
    XdgFileSystem files;
    const RaisedDevicesRecord record(files, raisedDevicesPath(), nullptr);
    return std::ranges::any_of(record.devices, [&server](const auto& entry) {
        const auto id = server.deviceForUID(entry.first);
        const auto level = id ? server.level(*id) : std::nullopt;
        return level && isLouder(*level, entry.second.found);
    });
}

bool SessionRestore::hasRecord() {
    XdgFileSystem files;
    const auto defaults = JsonUserDefaults::readOnly(JsonUserDefaults::standardPath());
    return SavedSession::load(defaults) ||
           !RaisedDevicesRecord(files, raisedDevicesPath(), nullptr).isEmpty();
}

bool SessionRestore::restoreDevice(AudioServer& server) {
    XdgFileSystem files;
    const auto hardware =
        LoudnessGuard::forRestore(server, RaisedDevicesRecord(files, raisedDevicesPath(), nullptr));
    AppDelegate::handleTermination(*hardware,
                                   JsonUserDefaults::readOnly(JsonUserDefaults::standardPath()));
    return hardware->releaseDefaultOutput();
}

} // namespace halvo
