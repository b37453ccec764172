#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo {

class DesktopEntry;

/// Whether the desktop starts Halvo when its user logs in, as the Autostart directories say it: the
/// user's own file stands before those of the system. Nothing is remembered: others change these
/// files, too. Main thread only.
class Autostart {
  public:
    /// `program` is what is to be started, an absolute path.
    explicit Autostart(std::filesystem::path program);

    /// What the desktop would do at the next login.
    bool isEnabled() const;
    /// Touches the user's file only, and in it nothing that others wrote. False when it cannot be
    /// written; `isEnabled` then tells what is true.
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
