#include "linux/files/Autostart.h"

#include "linux/files/DesktopEntry.h"
#include "linux/files/XdgDirectories.h"
#include "posix/AtomicFile.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace halvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFolder = "autostart";
constexpr const char* kFile = "org.halvo.Halvo.desktop";
constexpr std::size_t kMaximumSize = std::size_t{1} << 18U; // bytes
constexpr const char* kHidden = "Hidden";
constexpr const char* kSessionSwitch = "X-GNOME-Autostart-enabled";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = text.find(separator);
        if (end != 0) parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return parts;
}

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

bool isInPath(const std::string& program) {
    if (fs::path(program).is_absolute()) return isProgram(program);
    for (const auto& folder : split(environment("PATH"), ':')) {
        if (isProgram(fs::path(folder) / program)) return true;
    }
    return false;
}

bool namesThisDesktop(const std::string& list) {
    const auto desktops = split(environment("XDG_CURRENT_DESKTOP"), ':');
    for (const auto& name : split(list, ';')) {
        if (std::ranges::find(desktops, name) != desktops.end()) return true;
    }
    return false;
}

/// A path as the value of Exec, quoted by the rules of desktop entries; percent signs are escaped.
std::string quoted(const fs::path& path) {
    std::string text = "\"";
    for (const char c : path.string()) {
        if (std::string_view("\"`$\\").contains(c)) text += c == '\\' ? "\\\\\\" : "\\\\";
        text += c == '%' ? "%%" : std::string(1, c);
    }
    return text + '"';
}

} // namespace

Autostart::Autostart(fs::path program)
    : program_(std::move(program)), userFile_(configDirectory() / kFolder / kFile) {}

std::string Autostart::ownText() const {
    DesktopEntry entry("");
    entry.set("Type", "Application");
    entry.set("Name", "Halvo");
    entry.set("Comment", "Ten-band equalizer for everything your computer plays");
    entry.set("Exec", quoted(program_));
    entry.set("TryExec", program_.string()); // a removed program starts nothing
    entry.set("Icon", "org.halvo.Halvo");
    entry.set(kSessionSwitch, "true");
    return entry.text();
}

std::optional<std::string> Autostart::systemText() const {
    auto folders = split(environment("XDG_CONFIG_DIRS"), ':');
    if (folders.empty()) folders.emplace_back("/etc/xdg");
    for (const auto& folder : folders) {
        if (auto text = AtomicFile::read(fs::path(folder) / kFolder / kFile, kMaximumSize))
            return text;
    }
    return std::nullopt;
}

bool Autostart::starts(const DesktopEntry& entry) const {
    if (entry.isTrue(kHidden) || !entry.value("Exec")) return false;
    if (entry.value(kSessionSwitch) && !entry.isTrue(kSessionSwitch)) return false;
    if (const auto program = entry.value("TryExec"); program && !isInPath(*program)) return false;
    if (const auto only = entry.value("OnlyShowIn"); only && !namesThisDesktop(*only)) return false;
    const auto never = entry.value("NotShowIn");
    return !never || !namesThisDesktop(*never);
}

bool Autostart::isEnabled() const {
    auto text = AtomicFile::read(userFile_, kMaximumSize);
    std::error_code error;
    // An existing entry that is not a regular file, such as a link to /dev/null, also hides the
    // system's.
    if (!text && !fs::is_symlink(userFile_, error)) text = systemText();
    return text && starts(DesktopEntry(*text));
}

bool Autostart::setEnabled(bool enabled) const {
    if (enabled == isEnabled()) return true;
    std::error_code error;
    fs::create_directories(userFile_.parent_path(), error); // a failure shows when writing
    return (enabled ? enable() : disable()) && isEnabled() == enabled;
}

bool Autostart::enable() const {
    const auto written = AtomicFile::read(userFile_, kMaximumSize);
    if (!written) {
        std::error_code error;
        if (fs::exists(fs::symlink_status(userFile_, error))) return false; // not ours to replace
        return AtomicFile::write(userFile_, ownText());
    }
    DesktopEntry entry(*written);
    entry.remove(kHidden);
    if (entry.value(kSessionSwitch)) entry.set(kSessionSwitch, "true");
    if (starts(entry)) return AtomicFile::write(userFile_, entry.text());
    // The program it starts does not exist, or it is for other desktops.
    const DesktopEntry own(ownText());
    for (const char* key : {"Type", "Name", "Exec", "TryExec"})
        entry.set(key, *own.value(key));
    for (const char* key : {"OnlyShowIn", "NotShowIn"})
        entry.remove(key);
    return AtomicFile::write(userFile_, entry.text());
}

bool Autostart::disable() const {
    const auto written = AtomicFile::read(userFile_, kMaximumSize);
    const auto system = systemText();
    if (written == ownText() && !system) {
        std::error_code error;
        return fs::remove(userFile_, error);
    }
    DesktopEntry entry(written ? *written : system.value_or(""));
    entry.set(kHidden, "true");
    return AtomicFile::write(userFile_, entry.text());
}

} // namespace halvo
