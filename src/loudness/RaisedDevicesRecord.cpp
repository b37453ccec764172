#include "loudness/RaisedDevicesRecord.h"

#include "platform/FileSystem.h"
#include "platform/SystemLog.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;

/// Single precision, so that a volume is written in its shortest form.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

std::optional<std::string> stringIn(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<bool> boolIn(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_boolean()) return std::nullopt;
    return found->get<bool>();
}

std::optional<std::vector<float>> volumesIn(const Json& object) {
    const auto found = object.find("volumes");
    if (found == object.end() || !found->is_array() || found->empty()) return std::nullopt;
    std::vector<float> volumes;
    for (const auto& volume : *found) {
        if (!volume.is_number()) return std::nullopt;
        volumes.push_back(std::clamp(volume.get<float>(), 0.0F, 1.0F));
    }
    return volumes;
}

std::optional<RaisedDevicesRecord::Device> deviceIn(const Json& object) {
    if (!object.is_object()) return std::nullopt;
    auto volumes = volumesIn(object);
    const auto muted = boolIn(object, "muted");
    const auto moved = boolIn(object, "moved");
    if (!volumes || !muted || !moved) return std::nullopt;
    auto port = stringIn(object, "port").value_or("");
    return RaisedDevicesRecord::Device{{std::move(*volumes), *muted, std::move(port)},
                                       *moved,
                                       boolIn(object, "unsure").value_or(false)};
}

} // namespace

RaisedDevicesRecord::RaisedDevicesRecord(FileSystem& files, Places places, SystemLog* log)
    : files_(files), places_(std::move(places)) {
    // The spare one is the later: it is removed as soon as the usual one can be written again.
    const bool hasSpare = !places_.spare.empty() && files_.exists(places_.spare);
    const auto& path = hasSpare ? places_.spare : places_.usual;
    if (files_.exists(path)) load(path, log);
}

void RaisedDevicesRecord::load(const fs::path& path, SystemLog* log) {
    stored_ = files_.read(path);
    if (stored_ && parse(*stored_)) return;
    stored_.reset();
    devices.clear();
    origin.reset();
    isDefaultOpen = false;
    (void)files_.setAside(path); // else the next save replaces it
    if (log == nullptr) return;
    log->write("Halvo: The record of raised devices in " + path.string() +
               " cannot be read; it was set aside");
}

bool RaisedDevicesRecord::isOpen() const {
    return isDefaultOpen || std::ranges::any_of(devices, [](const auto& entry) {
               return entry.second.isMoved || entry.second.isUnsure;
           });
}

void RaisedDevicesRecord::confirm() {
    for (auto& [uid, device] : devices)
        device.isUnsure = false;
    isDefaultOpen = false;
}

bool RaisedDevicesRecord::save() {
    const auto contents = text();
    if (stored_ == contents) return true;
    const bool isUsual = isEmpty() ? files_.remove(places_.usual) : write(places_.usual, contents);
    if (isUsual) {
        (void)files_.remove(places_.spare); // in most sessions there is none
    } else {
        if (!write(places_.spare, contents)) return false;
        (void)files_.remove(places_.usual); // older; the spare one counts in any case
    }
    stored_ = contents;
    return true;
}

void RaisedDevicesRecord::saveAnew() const {
    auto copy = *this;
    copy.stored_.reset();
    (void)copy.save(); // what is on disk has to do
}

bool RaisedDevicesRecord::write(const fs::path& path, const std::string& text) {
    if (path.empty()) return false;
    (void)files_.createDirectory(path.parent_path()); // a failure shows in the write
    return files_.write(path, text);
}

bool RaisedDevicesRecord::parse(const std::string& text) {
    const auto root = Json::parse(text, nullptr, false);
    if (!root.is_object()) return false;
    const auto listed = root.find("devices");
    if (listed == root.end() || !listed->is_object()) return false;
    for (const auto& [uid, entry] : listed->items()) {
        auto device = deviceIn(entry);
        if (!device) return false;
        devices.emplace(uid, std::move(*device));
    }
    isDefaultOpen = boolIn(root, "defaultOpen").value_or(false);
    const auto taken = root.find("origin");
    if (taken == root.end()) return true;
    const auto output = taken->is_object() ? stringIn(*taken, "output") : std::nullopt;
    if (!output) return false;
    origin = Origin{*output, stringIn(*taken, "configured")};
    return true;
}

std::string RaisedDevicesRecord::text() const {
    Json root{{"devices", Json::object()}};
    for (const auto& [uid, device] : devices) {
        root["devices"][uid] = {{"volumes", device.found.channelVolumes},
                                {"muted", device.found.muted},
                                {"moved", device.isMoved}};
        if (device.isUnsure) root["devices"][uid]["unsure"] = true;
        if (!device.found.port.empty()) root["devices"][uid]["port"] = device.found.port;
    }
    if (isDefaultOpen) root["defaultOpen"] = true;
    if (origin) {
        root["origin"] = {{"output", origin->output}};
        if (origin->configured) root["origin"]["configured"] = *origin->configured;
    }
    // Names come from outside: what is not UTF-8 must not throw.
    return root.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace halvo
