#pragma once

#include "loudness/AudioServer.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace halvo {

class FileSystem;
class SystemLog;

/// What this program changed on the user's devices and how it was before, on disk, so that a later
/// process or another thread can put it right. Any one thread.
class RaisedDevicesRecord {
  public:
    struct Device {
        DeviceLevel found;     ///< the device's own level
        bool isMoved = false;  ///< the device may not be at its own level now
        bool isUnsure = false; ///< it is, but the session manager may have kept another one

        bool operator==(const Device&) const = default;
    };

    /// The default output before the virtual device took its place, by UID.
    struct Origin {
        std::string output;
        std::optional<std::string> configured; ///< what a person had asked for, if anything

        bool operator==(const Origin&) const = default;
    };

    /// Where the file may lie: `usual`, and `spare` while the usual folder takes nothing.
    struct Places {
        std::filesystem::path usual;
        std::filesystem::path spare;
    };

    /// Reads the file, the spare one if there is one; `files` must outlive the record. One that
    /// cannot be understood counts as empty and is set aside under another name; `log`, if any, is
    /// told. Volumes are limited to 0…1.
    RaisedDevicesRecord(FileSystem& files, Places places, SystemLog* log);

    std::map<std::string, Device> devices; ///< by UID
    std::optional<Origin> origin;
    /// The virtual device is the default, or the session manager may have kept that it was.
    bool isDefaultOpen = false;

    bool isEmpty() const { return devices.empty() && !origin && !isDefaultOpen; }
    /// Whether a device may be at another level than its own, or the virtual one the default, now
    /// or at the next login.
    bool isOpen() const;
    /// The session manager has kept what every device was given back.
    void confirm();

    /// Brings the file up to date: replaced whole, or removed when there is nothing to record. Does
    /// nothing when the file is already right. False when it can be written in neither place.
    bool save();
    /// The same for one that another process may have changed on disk. A failure is left at that.
    void saveAnew() const;

  private:
    void load(const std::filesystem::path& path, SystemLog* log);
    bool parse(const std::string& text);
    std::string text() const;
    bool write(const std::filesystem::path& path, const std::string& text);

    FileSystem& files_;
    Places places_;
    std::optional<std::string> stored_; ///< what the file holds; nothing: there is none
};

} // namespace halvo
