#pragma once

#include "linux/process/SpawnedChild.h"
#include "media/ScriptedPlayer.h"
#include "session/SessionDirectory.h"
#include "session/SpawnedProgram.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvo::test {

/// A helper on a pipe, as the application starts it, and its lines.
class HelperRun {
  public:
    HelperRun();
    ~HelperRun();
    HelperRun(const HelperRun&) = delete;
    HelperRun& operator=(const HelperRun&) = delete;

    int pid() const { return child_->pid(); }
    /// The payloads of all lines so far; a line of another form is a failure of the test.
    const std::vector<nlohmann::json>& payloads();
    nlohmann::json last();
    /// Waits until the newest payload has these fields, whatever others it has.
    bool shows(const nlohmann::json& fields);
    /// Closes the reader's end; the exit status if the helper ends in time.
    std::optional<int> leave(std::chrono::milliseconds deadline);
    std::optional<int> wait(std::chrono::milliseconds deadline) { return child_->wait(deadline); }

  private:
    std::optional<SpawnedChild> child_;
    FileDescriptor output_;
    std::string partial_;
    std::vector<nlohmann::json> payloads_;
};

/// A private session bus, used by this process and its children, with players on it.
class BusScene {
  public:
    using Metadata = media::ScriptedPlayer::Metadata;

    enum class Bus { running, later };
    explicit BusScene(Bus bus = Bus::running);
    ~BusScene();
    BusScene(const BusScene&) = delete;
    BusScene& operator=(const BusScene&) = delete;

    void startBus();
    void stopBus() { bus_.reset(); }
    std::string busAddress() const { return "unix:path=" + directory_ + "/run/bus"; }
    const std::string& directory() const { return directory_; }

    std::unique_ptr<media::ScriptedPlayer> player(const std::string& name);
    /// A player with these properties.
    std::unique_ptr<media::ScriptedPlayer> player(const std::string& name,
                                                  const std::string& status, Metadata metadata);
    std::unique_ptr<session::SpawnedProgram> spawn(const std::vector<std::string>& arguments);
    /// Runs the helper with a command word; its exit status.
    int command(const std::string& word);
    /// A file with these bytes in the scene's folder; its path.
    std::string file(const std::string& name, const std::string& bytes) const;

  private:
    std::string directory_;
    std::vector<std::string> environment_;
    std::vector<std::pair<std::string, std::optional<std::string>>> outer_; ///< this process's own
    std::unique_ptr<session::SessionDirectory> ownDirectory_;
    std::unique_ptr<session::SpawnedProgram> bus_;
};

/// Polls until the condition holds; false after ten seconds.
bool waitFor(const std::function<bool()>& condition);

} // namespace halvo::test
