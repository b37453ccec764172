#include "app/SavedSession.h"

#include "platform/UserDefaults.h"

#include <algorithm>

namespace halvo {

void SavedSession::save(UserDefaults& defaults, const SavedSession& session) {
    defaults.setBool(kSavedDirtyFlag, true);
    defaults.setFloat(kSavedRealVolume, session.volume);
    defaults.setString(kSavedRealDeviceUID, session.uid);
}

void SavedSession::clear(UserDefaults& defaults) {
    defaults.remove(kSavedDirtyFlag);
    defaults.remove(kSavedRealVolume);
    defaults.remove(kSavedRealDeviceUID);
}

std::optional<SavedSession> SavedSession::load(const UserDefaults& defaults) {
    if (!defaults.boolForKey(kSavedDirtyFlag)) return std::nullopt;
    const auto uid = defaults.stringForKey(kSavedRealDeviceUID);
    if (!uid) return std::nullopt;
    const float volume = defaults.floatForKey(kSavedRealVolume);
    return SavedSession{*uid, volume > 0 ? std::min(volume, 1.0F) : 0}; // no number counts as 0
}

} // namespace halvo
