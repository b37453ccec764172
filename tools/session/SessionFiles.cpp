#include "session/SessionFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace halvo::session {

namespace {

namespace fs = std::filesystem;

// Without service directories: nothing is started on the machine's behalf.
constexpr const char* kBusConfiguration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=@/run/bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

// The machine's real devices stay out of the session, with either generation of session manager.
constexpr const char* kNoHardware = R"(alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
)";
constexpr const char* kNoBluetooth = "bluez_monitor.enabled = false\n";
constexpr const char* kNoHardwareProfile = R"(wireplumber.profiles = {
  main = {
    hardware.audio = disabled
    hardware.bluetooth = disabled
    hardware.video-capture = disabled
  }
}
)";

bool writeFile(const fs::path& path, const std::string& text) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream << text;
    return stream.good();
}

std::string volumeList(const std::vector<float>& volumes) {
    std::string list;
    for (const float volume : volumes) {
        // Not by way of printf: the locale may write a comma.
        std::array<char, 32> text{};
        list.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), volume).ptr);
        list += ' ';
    }
    return "{ channelVolumes = [ " + list + "] }";
}

bool belongsToOuterSession(std::string_view variable) {
    constexpr std::array<std::string_view, 2> kKept{"PIPEWIRE_DEBUG=", "PIPEWIRE_MODULE_DIR="};
    constexpr std::array<std::string_view, 8> kDropped{
        "PIPEWIRE_",        "PULSE_",           "DBUS_",
        "XDG_RUNTIME_DIR=", "HALVO_RING_NAME=", "WIREPLUMBER_CONFIG_DIR=",
        "DISPLAY=",         "WAYLAND_DISPLAY="};
    const auto startsWith = [&](std::string_view prefix) { return variable.starts_with(prefix); };
    return std::ranges::any_of(kDropped, startsWith) && !std::ranges::any_of(kKept, startsWith);
}

} // namespace

bool writeSessionFiles(const std::string& directory) {
    std::error_code error;
    for (const char* name : {"run", "config", "state", "data", "cache", "tmp", "home", "log"}) {
        const fs::path path = fs::path(directory) / name;
        if (!fs::create_directory(path, error)) return false;
        fs::permissions(path, fs::perms::owner_all, error);
    }
    std::string bus = kBusConfiguration;
    bus.replace(bus.find('@'), 1, directory);
    const fs::path manager = fs::path(directory) / "config" / "wireplumber";
    return writeFile(fs::path(directory) / "bus.conf", bus) &&
           writeFile(manager / "main.lua.d" / "80-private.lua", kNoHardware) &&
           writeFile(manager / "bluetooth.lua.d" / "80-private.lua", kNoBluetooth) &&
           writeFile(manager / "wireplumber.conf.d" / "80-private.conf", kNoHardwareProfile);
}

std::vector<std::pair<std::string, std::string>> outputProperties(const SimulatedOutput& output,
                                                                  int priority) {
    return {{"factory.name", "support.null-audio-sink"},
            {"node.name", output.nodeName},
            {"node.description", output.description},
            {"media.class", "Audio/Sink"},
            {"audio.position", "FL,FR"},
            {"object.linger", "true"},
            {"monitor.channel-volumes", "true"},
            {"priority.session", std::to_string(priority)},
            {"state.restore-props", output.isRemembered ? "true" : "false"},
            {"node.param.Props", volumeList(output.volumes)}};
}

bool writeServerConfiguration(const std::string& directory, const Options& options) {
    const std::string rate = std::to_string(options.rate);
    const std::string quantum = std::to_string(options.quantum);
    std::string text = "context.properties = {\n"
                       "  default.clock.rate = " +
                       rate +
                       "\n"
                       "  default.clock.allowed-rates = [ " +
                       rate +
                       " ]\n"
                       "  default.clock.quantum = " +
                       quantum +
                       "\n"
                       "  default.clock.min-quantum = " +
                       quantum +
                       "\n"
                       "  default.clock.max-quantum = " +
                       quantum +
                       "\n"
                       "  vm.overrides = { default.clock.min-quantum = " +
                       quantum +
                       " }\n"
                       "}\n"
                       "context.objects = [\n";
    int priority = 1000;
    for (const auto& output : options.outputs) {
        const int raised = output.nodeName == options.defaultOutput ? 2000 : priority--;
        text += "  { factory = adapter args = {\n";
        for (const auto& [key, value] : outputProperties(output, raised)) {
            const bool isObject = value.starts_with('{');
            text += "    " + key + " = " + (isObject ? value : '"' + value + '"') + "\n";
        }
        text += "  } }\n";
    }
    const fs::path folder = fs::path(directory) / "config" / "pipewire" / "pipewire.conf.d";
    return writeFile(folder / "50-private.conf", text + "]\n");
}

std::vector<std::string> sessionEnvironment(const std::string& directory,
                                            const std::string& ringName, bool withBus) {
    std::vector<std::string> result{
        "XDG_RUNTIME_DIR=" + directory + "/run", "PIPEWIRE_RUNTIME_DIR=" + directory + "/run",
        "XDG_CONFIG_HOME=" + directory + "/config", "XDG_STATE_HOME=" + directory + "/state",
        "XDG_DATA_HOME=" + directory + "/data", "XDG_CACHE_HOME=" + directory + "/cache",
        "TMPDIR=" + directory + "/tmp", "HOME=" + directory + "/home",
        "HALVO_RING_NAME=" + ringName,
        // The real buses never: services on them would reach the machine's hardware.
        "DBUS_SESSION_BUS_ADDRESS=unix:path=" + directory + (withBus ? "/run/bus" : "/run/no-bus"),
        "DBUS_SYSTEM_BUS_ADDRESS=unix:path=" + directory + "/run/no-system-bus"};
    const auto own = result;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('=') + 1);
        const bool replaced = std::ranges::any_of(
            own, [&](const std::string& entry) { return entry.starts_with(name); });
        if (!replaced && !belongsToOuterSession(text)) result.push_back(text);
    }
    return result;
}

} // namespace halvo::session
