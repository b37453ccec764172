#include "loudness/SettlingDevices.h"

#include "platform/VirtualOutput.h"

#include <utility>

namespace halvo {

SettlingDevices::SettlingDevices(AudioServer& server, LoudnessSession* session,
                                 std::function<void()> settled)
    : server_(server), session_(session), settled_(std::move(settled)), ports_(presentPorts()) {}

std::vector<AudioDeviceID> SettlingDevices::update() {
    const auto before = std::exchange(ports_, presentPorts());
    std::vector<AudioDeviceID> appeared;
    for (const auto& [id, port] : ports_) {
        const auto former = before.find(id);
        if (former != before.end() && former->second == port) continue;
        if (former == before.end()) appeared.push_back(id);
        wait(id);
    }
    std::erase_if(settling_, [this](const auto& entry) { return !ports_.contains(entry.first); });
    return appeared;
}

std::map<AudioDeviceID, std::string> SettlingDevices::presentPorts() {
    std::map<AudioDeviceID, std::string> ports;
    for (const auto id : server_.deviceIDs().value_or(std::vector<AudioDeviceID>{})) {
        if (server_.uid(id) == kVirtualDeviceUID) continue;
        if (const auto level = server_.level(id)) ports[id] = level->port;
    }
    return ports;
}

void SettlingDevices::wait(AudioDeviceID id) {
    const auto generation = settling_[id] = ++generation_;
    session_->mainQueue.after(kTime, [this, id, generation, alive = lifetime_.watch()] {
        if (alive.expired()) return;
        const auto found = settling_.find(id);
        if (found == settling_.end() || found->second != generation) return;
        settling_.erase(found);
        settled_();
    });
}

} // namespace halvo
