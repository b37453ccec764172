#include "nowplaying/NowPlayingMonitor.h"

#include "platform/FileSystem.h"
#include "platform/MainQueue.h"
#include "platform/MediaHelper.h"
#include "platform/SystemLog.h"

#include <chrono>
#include <filesystem>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr MainQueue::Duration kRestartDelay = 2s;

} // namespace

void NowPlayingMonitor::locateHelperFiles() {
    if (const auto folder = services_.mediaHelper.resourceFolder()) {
        const auto subfolder = (std::filesystem::path(*folder) / "MediaRemoteHelper").string();
        if (adoptHelper(subfolder, "subdir") || adoptHelper(*folder, "root")) return;
    }
    services_.systemLog.write("Halvo: Helper files not found in bundle");
}

bool NowPlayingMonitor::adoptHelper(const std::string& folder, const std::string& place) {
    const std::filesystem::path directory(folder);
    const auto library = directory / services_.mediaHelper.libraryName();
    const auto script = directory / services_.mediaHelper.scriptName();
    if (!services_.fileSystem.exists(library) || !services_.fileSystem.exists(script)) return false;
    dylibPath_ = library.string();
    scriptPath_ = script.string();
    services_.systemLog.write("Halvo: Found helper in app bundle " + place + ": " + folder);
    return true;
}

void NowPlayingMonitor::startHelperProcess() {
    if (!dylibPath_ || !scriptPath_) return;
    ++helper_;
    const auto call = services_.mediaHelper.command(*scriptPath_, *dylibPath_, "loop");
    auto launched = services_.childProcesses.launch(call, helperHandlers());
    if (!launched) {
        services_.systemLog.write("Halvo: Failed to start helper process: " + launched.error());
        ++restarts_; // from now on the players are polled
        startAppleScriptPolling();
        return;
    }
    helperProcess_ = std::move(*launched);
    services_.systemLog.write("Halvo: MediaRemote helper process started (PID: " +
                              std::to_string(helperProcess_->processIdentifier()) + ")");
}

void NowPlayingMonitor::stopHelperProcess() {
    ++restarts_;
    for (const auto& [number, process] : std::exchange(leavingHelpers_, {}))
        process->terminate();
    const auto process = std::exchange(helperProcess_, nullptr);
    if (!process || !process->isRunning()) return;
    process->terminate();
    services_.systemLog.write("Halvo: Helper process terminated");
}

/// The handlers end with their process, which is destroyed before the monitor.
ChildProcessHandlers NowPlayingMonitor::helperHandlers() {
    return {.onOutput = [this](const std::string& bytes) { reader_.processIncomingData(bytes); },
            .onEndOfOutput = [this, helper = helper_] { helperClosedOutput(helper); },
            .onExit = [this, helper = helper_](int status) { helperExited(helper, status); }};
}

void NowPlayingMonitor::helperClosedOutput(Generation helper) {
    if (helper == helper_ && helperProcess_) {
        leavingHelpers_.insert_or_assign(helper, std::move(helperProcess_)); // still to end
    }
    handleHelperTermination(helper);
}

void NowPlayingMonitor::helperExited(Generation helper, int status) {
    services_.systemLog.write("Halvo: Helper process terminated with status " +
                              std::to_string(status));
    const auto left = leavingHelpers_.extract(helper);
    handleHelperTermination(helper);
}

void NowPlayingMonitor::handleHelperTermination(Generation helper) {
    // A helper that outlives its output must not end its successor.
    if (helper == helper_) helperProcess_.reset();
    scheduleRestart();
}

/// Called at the end of the output and at the end of the process; the second call finds the helper
/// restarted.
void NowPlayingMonitor::scheduleRestart() {
    services_.mainQueue.after(kRestartDelay,
                              [this, alive = lifetime_.watch(), restart = restarts_] {
                                  if (alive.expired() || restart != restarts_ || helperProcess_)
                                      return;
                                  services_.systemLog.write("Halvo: Restarting helper process...");
                                  startHelperProcess();
                              });
}

void NowPlayingMonitor::handleTrackPayload(const TrackPayload& payload) {
    if (!payload.track) return clearTrack();
    isPlaying.set(payload.isPlaying);
    if (payload.track == currentTrack.get()) return; // by design artwork is not compared
    announce("Now Playing", *payload.track);
    currentTrack.set(payload.track);
    artworkImage.set(payload.artwork);
}

} // namespace halvo
