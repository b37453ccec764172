#include "guard/RestoreHost.h"
#include "linux/files/JsonUserDefaults.h"
#include "linux/files/XdgDirectories.h"
#include "linux/files/XdgFileSystem.h"
#include "linux/pipewire/PipeWireAudioHardware.h"
#include "linux/pipewire/PipeWireConnection.h"

#include <optional>

namespace halvo {

namespace {

using std::chrono::milliseconds;

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

class LinuxRestoreHost final : public RestoreHost {
  public:
    FileSystem& files() override { return files_; }
    SessionFiles sessionFiles() override { return halvo::sessionFiles(); }
    std::unique_ptr<UserDefaults> defaults() override {
        return std::make_unique<JsonUserDefaults>(
            JsonUserDefaults::readOnly(JsonUserDefaults::standardPath()));
    }

    AudioServer& server() override { return *server_; }

    bool waitForServer(milliseconds longest) override {
        if (!connection_) {
            connection_ = PipeWireConnection::create();
            if (!connection_) return false;
            server_.emplace(*connection_, queue_);
        }
        return connection_->waitUntilReady(longest);
    }

    bool waitUntilKept(const std::function<bool()>& isUndone) override {
        PipeWireConnection::Lock lock(*connection_);
        (void)lock.waitFor(isUndone, kManagersDelay); // ends early when the server goes
        return connection_->isReady();
    }

  private:
    XdgFileSystem files_;
    NoQueue queue_;
    std::unique_ptr<PipeWireConnection> connection_;
    std::optional<PipeWireAudioHardware> server_;
};

} // namespace

std::unique_ptr<RestoreHost> makeRestoreHost() {
    return std::make_unique<LinuxRestoreHost>();
}

} // namespace halvo
