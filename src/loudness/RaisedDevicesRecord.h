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
        DeviceLevel found;    ///< the device's own level
        bool isMoved = false; ///< the device may not be at its own level now

        bool operator==(const Device&) const = default;
    };

    /// The default output before the virtual device took its place, by UID.
    struct Origin {
        std::string output;
        std::optional<std::string> configured; ///< what a person had asked for, if anything

        bool operator==(const Origin&) const = default;
    };

    /// Reads the file; `files` must outlive the record. One that cannot be understood counts as
    /// empty and is set aside under another name; `log`, if any, is told.
    RaisedDevicesRecord(FileSystem& files, std::filesystem::path path, SystemLog* log);

    std::map<std::string, Device> devices; ///< by UID
    std::optional<Origin> origin;

    bool isEmpty() const { return devices.empty() && !origin; }

    /// Brings the file up to date: replaced whole, or removed when there is nothing to record. Does
    /// nothing when the file is already right. False when it cannot be written.
    bool save();

  private:
    bool parse(const std::string& text);
    std::string text() const;

    FileSystem& files_;
    std::filesystem::path path_;
    std::optional<std::string> stored_; ///< what the file holds; nothing: there is none
};

} // namespace halvo
