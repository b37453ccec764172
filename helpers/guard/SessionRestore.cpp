#include "SessionRestore.h"

#include "app/AppDelegate.h"
#include "app/SavedSession.h"
#include "loudness/AudioServer.h"
#include "loudness/LevelScale.h"
#include "loudness/LoudnessGuard.h"
#include "loudness/RaisedDevicesRecord.h"
#include "platform/UserDefaults.h"
#include "platform/VirtualOutput.h"
#include "posix/SessionLock.h"

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

} // namespace

RaisedDevicesRecord SessionRestore::recorded() {
    return {host_.files(), host_.sessionFiles().record, nullptr};
}

bool SessionRestore::hasSavedSession() {
    return SavedSession::load(*host_.defaults()).has_value();
}

bool SessionRestore::hasWork(Occasion occasion) {
    const auto record = recorded();
    if (occasion != Occasion::crash) return record.isOpen();
    return hasSavedSession() || !record.isEmpty();
}

SessionRestore::Result SessionRestore::run(Occasion occasion, milliseconds longest) {
    if (!hasWork(occasion)) return Result::done;
    const auto found = recorded();
    bool isRepeated = false;
    bool isSetAgain = false;
    auto end = Clock::now() + longest;
    for (; Clock::now() < end; std::this_thread::sleep_for(kPause)) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (!host_.waitForServer(left)) continue;
        // Released between attempts: an application that starts meanwhile takes it and restores
        // all.
        auto lock = SessionLock::take(host_.sessionFiles().lock, kLongestLock);
        if (!lock) return Result::running;
        // What it found raised stands in no other place any more.
        if (isRepeated) found.saveAnew();
        if (!restore(occasion)) continue;
        lock.reset();
        // A session manager that has just started may have set its own last level meanwhile. Once
        // more then; what is louder after that is somebody's wish.
        const bool isDone = isWrittenDown(occasion);
        const bool isLast = isSetAgain || occasion == Occasion::ending;
        if (isDone && (isLast || !isUndone())) {
            confirm();
            return Result::done;
        }
        isSetAgain = isDone;
        isRepeated = true;
        end = Clock::now() + longest;
    }
    return Result::failed;
}

bool SessionRestore::restore(Occasion occasion) {
    if (occasion == Occasion::ending) return true;
    const auto hardware = LoudnessGuard::forRestore(host_.server(), recorded());
    if (occasion == Occasion::crash) {
        AppDelegate::handleTermination(*hardware, *host_.defaults());
    }
    return hardware->releaseDefaultOutput();
}

bool SessionRestore::isWrittenDown(Occasion occasion) {
    // At the beginning of a session its manager brings back the default and the levels that it has
    // kept.
    const bool isWatching = occasion == Occasion::session;
    return host_.waitUntilKept([&] { return isWatching && isUndone(); });
}

bool SessionRestore::isUndone() {
    auto& server = host_.server();
    if (server.configuredDefault() == kVirtualDeviceUID) return true;
    const auto record = recorded();
    return std::ranges::any_of(record.devices, [&server](const auto& entry) {
        const auto id = server.deviceForUID(entry.first);
        const auto level = id ? server.level(*id) : std::nullopt;
        return level && isAbove(*level, entry.second.found);
    });
}

void SessionRestore::confirm() {
    const auto lock = SessionLock::take(host_.sessionFiles().lock, kLongestLock);
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
