#pragma once

#include "base/Lifetime.h"
#include "base/Published.h"
#include "base/Subscription.h"
#include "nowplaying/HelperReader.h"
#include "nowplaying/MediaCommand.h"
#include "nowplaying/NowPlayingTrack.h"
#include "nowplaying/PlayerQuery.h"
#include "platform/ChildProcess.h"
#include "platform/Image.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace halvo {

class BackgroundQueue;
class FileSystem;
class HTTPSession;
class MainQueue;
class MediaHelper;
class ScriptRunner;
class SystemLog;

/// The monitor's services.
struct NowPlayingServices {
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    ChildProcessLauncher& childProcesses;
    ScriptRunner& scriptRunner;
    HTTPSession& httpSession;
    ImageReader& imageReader;
    MediaHelper& mediaHelper;
    FileSystem& fileSystem;
    SystemLog& systemLog;
};

/// Follows which track is playing and passes commands to the player. It reads the output of a
/// helper program and restarts it whenever it ends. Without a helper it asks two players by script
/// every three seconds. Main thread only.
class NowPlayingMonitor {
  public:
    /// Starts nothing.
    explicit NowPlayingMonitor(const NowPlayingServices& services);
    ~NowPlayingMonitor();

    Published<std::optional<NowPlayingTrack>> currentTrack;
    Published<bool> isPlaying{false};
    Published<std::optional<Image>> artworkImage; ///< the current track's cover

    /// Finds the helper's files; both paths stay absent if one is missing.
    void locateHelperFiles();
    const std::optional<std::string>& dylibPath() const { return dylibPath_; }
    const std::optional<std::string>& scriptPath() const { return scriptPath_; }

    /// Launches the helper, if its files exist. If that fails, the players are polled from then on.
    void startHelperProcess();
    /// Ends the helper and cancels restarts.
    void stopHelperProcess();

    void startAppleScriptPolling();
    void stopAppleScriptPolling();

    /// Sends a command to the player; returns at once. Failures are logged.
    void send(MediaCommand command);

  private:
    using Generation = std::uint64_t;

    // The helper: NowPlayingMonitorHelper.cpp.
    bool adoptHelper(const std::string& folder, const std::string& place);
    ChildProcessHandlers helperHandlers();
    void helperClosedOutput(Generation helper);
    void helperExited(Generation helper, int status);
    void handleHelperTermination(Generation helper);
    void scheduleRestart();
    void handleTrackPayload(const TrackPayload& payload);

    // The scripts: NowPlayingMonitorScripts.cpp.
    void schedulePoll();
    void fetchViaAppleScript();
    void applyPoll(const std::optional<PlayerAnswer>& answer);
    void applyAppleScriptTrack(const NowPlayingTrack& track,
                               const std::optional<std::string>& artworkURL);
    void fetchArtwork(const std::string& url);
    void publishArtwork(const std::string& bytes, const std::string& url);
    void sendCommandViaAppleScript(MediaCommand command);

    void announce(const char* prefix, const NowPlayingTrack& track);
    void clearTrack();

    NowPlayingServices services_;
    HelperReader reader_;
    std::optional<std::string> dylibPath_;
    std::optional<std::string> scriptPath_;

    std::unique_ptr<ChildProcess> helperProcess_;
    Generation helper_ = 0; ///< counts the helpers that were launched
    /// Helpers that closed their output but have not ended yet.
    std::map<Generation, std::unique_ptr<ChildProcess>> leavingHelpers_;
    Generation restarts_ = 0; ///< a changed number cancels pending restarts

    bool isAppleScriptRunning_ = false;
    std::optional<std::string> lastArtworkURL_;

    Lifetime lifetime_;
    Subscription pollTimer_;
};

} // namespace halvo
