#include "linux/files/XdgDirectories.h"

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace halvo {

namespace {

namespace fs = std::filesystem;

/// The absolute path in a variable; empty when there is none.
fs::path named(const char* variable) {
    const char* value = std::getenv(variable);
    const fs::path path = value != nullptr ? value : "";
    return path.is_absolute() ? path : fs::path();
}

fs::path homeDirectory() {
    if (auto home = named("HOME"); !home.empty()) return home;
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0) return "/";
    return found != nullptr ? entry.pw_dir : "/";
}

fs::path directory(const char* variable, const char* belowHome) {
    auto path = named(variable);
    return path.empty() ? homeDirectory() / belowHome : path;
}

} // namespace

fs::path configDirectory() {
    return directory("XDG_CONFIG_HOME", ".config");
}
fs::path dataDirectory() {
    return directory("XDG_DATA_HOME", ".local/share");
}
fs::path runtimeDirectory() {
    return named("XDG_RUNTIME_DIR");
}
SessionFiles sessionFiles() {
    const auto settings = configDirectory() / "halvo";
    const auto session = runtimeDirectory();
    const auto record = settings / "raised-devices.json";
    if (session.empty()) return {{record, {}}, settings / "session.lock"};
    return {{record, session / "halvo-raised-devices.json"}, session / "halvo-session.lock"};
}

} // namespace halvo
