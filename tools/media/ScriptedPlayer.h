#pragma once

#include "linux/mpris/BusHandles.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace halvo::media {

/// A player on the session bus (MPRIS) that plays nothing and reports what it is told to, in values
/// of any type. It serves on a thread of its own; use it from one thread at a time.
class ScriptedPlayer {
  public:
    using Value = std::variant<std::string, std::vector<std::string>, std::int64_t, std::uint64_t,
                               std::int32_t, double>;
    using Metadata = std::map<std::string, Value>;

    /// `name` is the player's part of the bus name. Null when there is no bus or the name is taken.
    static std::unique_ptr<ScriptedPlayer> start(const std::string& busAddress,
                                                 const std::string& name);
    /// Leaves the bus.
    ~ScriptedPlayer();
    ScriptedPlayer(const ScriptedPlayer&) = delete;
    ScriptedPlayer& operator=(const ScriptedPlayer&) = delete;

    /// "Playing", "Paused", "Stopped", or anything else; signalled on the bus.
    void setStatus(const std::string& status);
    void setMetadata(Metadata metadata);
    /// While it hangs, it reads nothing from the bus.
    void setHanging(bool hangs) { hangs_ = hangs; }
    /// The names of the methods that were called.
    std::vector<std::string> commands() const;

  private:
    ScriptedPlayer(mpris::Bus bus, int wake) : bus_(std::move(bus)), wake_(wake) {}

    bool publish(const std::string& name);
    void serve();
    void tell(const char* property);

    static int answer(sd_bus* bus, const char* path, const char* interface, const char* property,
                      sd_bus_message* reply, void* data, sd_bus_error* error);
    static int obey(sd_bus_message* call, void* data, sd_bus_error* error);

    mutable std::recursive_mutex mutex_; ///< guards the bus and the values
    mpris::Bus bus_;
    std::string status_ = "Stopped";
    Metadata metadata_;
    std::vector<std::string> commands_;

    int wake_; ///< wakes the thread
    std::atomic<bool> hangs_{false};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

} // namespace halvo::media
