#pragma once

#include "base/Published.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class SystemLog;
class UserDefaults;

/// The result of a track lookup.
struct SpotifyTrackInfo {
    std::string trackID;
    std::vector<std::string> genres;
};

/// The user's account with the streaming service: the tokens of an earlier sign-in, read once.
/// Sign-in, refresh and lookup are not implemented yet. Main thread only.
class SpotifyClient {
  public:
    using Date = std::chrono::sys_time<std::chrono::duration<double>>;

    SpotifyClient(const UserDefaults& defaults, SystemLog& log);

    Published<bool> isConnected{false}; ///< whether a refresh token is stored
    Published<std::optional<SpotifyTrackInfo>> lastLookupResult;

    const std::optional<std::string>& accessToken() const { return accessToken_; }
    const std::optional<std::string>& refreshToken() const { return refreshToken_; }
    std::optional<Date> tokenExpiry() const { return tokenExpiry_; }

  private:
    /// Receives the browser's redirect after sign-in.
    struct CallbackServer {
        std::uint16_t port = 0;
        std::function<void(std::expected<std::string, std::string>)> completion;
    };

    void loadTokens(const UserDefaults& defaults);

    std::optional<std::string> accessToken_;
    std::optional<std::string> refreshToken_;
    std::optional<Date> tokenExpiry_;
    std::map<std::string, SpotifyTrackInfo> cache_;
    std::unique_ptr<CallbackServer> callbackServer_; ///< during a sign-in
};

} // namespace halvo
