#include "nowplaying/SpotifyClient.h"

#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

namespace halvo {

namespace {

constexpr const char* kAccessTokenKey = "spotify_access_token";
constexpr const char* kRefreshTokenKey = "spotify_refresh_token";
constexpr const char* kTokenExpiryKey = "spotify_token_expiry"; ///< seconds since 1970, UTC

const char* nameOf(bool value) {
    return value ? "true" : "false";
}

} // namespace

SpotifyClient::SpotifyClient(const UserDefaults& defaults, SystemLog& log) {
    loadTokens(defaults);
    log.write(std::string("Halvo: SpotifyClient init — isConnected=") + nameOf(isConnected.get()) +
              ", hasRefreshToken=" + nameOf(refreshToken_.has_value()));
}

void SpotifyClient::loadTokens(const UserDefaults& defaults) {
    if (auto token = defaults.stringForKey(kAccessTokenKey)) accessToken_ = std::move(token);
    if (auto token = defaults.stringForKey(kRefreshTokenKey)) refreshToken_ = std::move(token);
    if (const auto seconds = defaults.doubleForKey(kTokenExpiryKey)) {
        tokenExpiry_ = Date(std::chrono::duration<double>(*seconds));
    }
    isConnected.set(refreshToken_.has_value());
}

} // namespace halvo
