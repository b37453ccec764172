#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

class DesktopEntry;

/// Whether the desktop starts Halvo at login, according to the Autostart directories; the user's
/// file overrides the system's. Nothing is cached, because other programs change these files too.
/// Main thread only.
class Autostart {
  public:
    /// `program` is the absolute path of the program to start.
    explicit Autostart(std::filesystem::path program);

    /// Whether the desktop will start it at the next login.
    bool isEnabled() const;
    /// Changes the user's file only, and keeps other programs' entries in it. False when it cannot
    /// be written; `isEnabled` then returns the actual state.
    bool setEnabled(bool enabled) const;

  private:
    std::string ownText() const;
    bool starts(const DesktopEntry& entry) const;
    std::optional<std::string> systemText() const;
    bool enable() const;
    bool disable() const;

    std::filesystem::path program_;
    std::filesystem::path userFile_;
};

} // namespace halvo
