#include "guard/RestoreHost.h"
#include "macos/CoreAudioHardware.h"
#include "macos/MacDirectories.h"
#include "macos/MacFileSystem.h"
#include "macos/MacUserDefaults.h"
#include "macos/ShortWait.h"

#include <chrono>

namespace halvo {

namespace {

using std::chrono::milliseconds;

/// Twice what the audio server takes to keep a level.
constexpr milliseconds kServersDelay{2000};

class MacRestoreHost final : public RestoreHost {
  public:
    FileSystem& files() override { return files_; }
    SessionFiles sessionFiles() override { return halvo::sessionFiles(); }
    std::unique_ptr<UserDefaults> defaults() override {
        return std::make_unique<MacUserDefaults>();
    }

    AudioServer& server() override { return server_; }

    bool waitForServer(milliseconds longest) override {
        return waitShortly([this] { return server_.defaultOutput().has_value(); }, longest);
    }

    bool waitUntilKept(const std::function<bool()>& isUndone) override {
        (void)waitShortly(isUndone, kServersDelay); // what is undone, the caller sees
        return server_.defaultOutput().has_value();
    }

  private:
    MacFileSystem files_;
    CoreAudioOwnOutput own_;
    CoreAudioHardware server_{own_};
};

} // namespace

std::unique_ptr<RestoreHost> makeRestoreHost() {
    return std::make_unique<MacRestoreHost>();
}

} // namespace halvo
