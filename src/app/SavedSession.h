#pragma once

#include <optional>
#include <string>

namespace halvo {

class UserDefaults;

/// The record of what the application has changed about the system's routing, kept in the user
/// defaults so that a crash can be repaired. Any thread that owns its view of the defaults.
class SavedSession {
  public:
    static constexpr const char* kSavedDirtyFlag = "halvo_dirtySession";
    static constexpr const char* kSavedRealVolume = "halvo_originalRealVolume";
    static constexpr const char* kSavedRealDeviceUID = "halvo_originalOutputUID";

    std::string uid; ///< the real device to give the output back to
    float volume = 0;

    static void save(UserDefaults& defaults, const SavedSession& session);
    static void clear(UserDefaults& defaults);
    /// Nothing while the flag is off, or when no device was saved. A missing volume reads as 0;
    /// what a file may say beyond 0…1 is limited to it.
    static std::optional<SavedSession> load(const UserDefaults& defaults);
};

} // namespace halvo
