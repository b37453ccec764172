#include "app/SavedSession.h"

#include "platform/UserDefaults.h"

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
    return SavedSession{*uid, defaults.floatForKey(kSavedRealVolume)};
}

} // namespace halvo
