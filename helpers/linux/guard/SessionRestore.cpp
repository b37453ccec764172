#include "SessionRestore.h"

#include "app/AppDelegate.h"
#include "app/SavedSession.h"
#include "platform/linux/JsonUserDefaults.h"
#include "platform/linux/LoudnessGuard.h"
#include "platform/linux/PipeWireAudioHardware.h"
#include "platform/linux/PipeWireConnection.h"
#include "platform/linux/RaisedDevicesRecord.h"
#include "platform/linux/SessionLock.h"

#include <thread>

namespace halvo {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The dead application's hold on the lock ends an instant after its pipe.
constexpr milliseconds kLongestLock{200};
constexpr milliseconds kPause{50};

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
    const auto end = Clock::now() + longest;
    const auto connection = PipeWireConnection::create();
    if (!connection) return Result::failed;
    NoQueue queue;
    PipeWireAudioHardware server(*connection, queue);
    for (; Clock::now() < end; std::this_thread::sleep_for(kPause)) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (!connection->waitUntilReady(left)) continue;
        // Let go of between attempts: an application that starts meanwhile takes it and does all.
        const auto lock = SessionLock::take(SessionLock::standardPath(), kLongestLock);
        if (!lock) return Result::running;
        if (giveBack(server)) return Result::done;
    }
    return Result::failed;
}

bool SessionRestore::hasRecord() {
    const auto defaults = JsonUserDefaults::readOnly(JsonUserDefaults::standardPath());
    return SavedSession::load(defaults) ||
           !RaisedDevicesRecord(RaisedDevicesRecord::standardPath(), nullptr).isEmpty();
}

bool SessionRestore::giveBack(AudioServer& server) {
    const auto hardware = LoudnessGuard::forGiveBack(server, RaisedDevicesRecord::standardPath());
    AppDelegate::handleTermination(*hardware,
                                   JsonUserDefaults::readOnly(JsonUserDefaults::standardPath()));
    return hardware->leaveVirtualDevice();
}

} // namespace halvo
