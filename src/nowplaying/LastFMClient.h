#pragma once

#include "base/Lifetime.h"
#include "base/Subscription.h"
#include "platform/MainQueue.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class HTTPSession;
class SystemLog;
class UnicodeText;
struct HTTPResponse;

/// Asks the tag service for an artist's tags, politely: once per artist and process, one request a
/// second, and one request for all who ask for the same artist meanwhile. Main thread only.
class LastFMClient {
  public:
    /// The tags that enough listeners gave, in lower case and the service's order.
    using Completion = std::function<void(const std::vector<std::string>& tags)>;

    LastFMClient(HTTPSession& session, MainQueue& queue, const UnicodeText& unicode,
                 SystemLog& log);

    /// Calls `completion` once: within the call when the answer is known, else within 5 seconds,
    /// with nothing when the service gave none; such a failure is tried anew the next time.
    void getArtistTags(const std::string& artist, Completion completion);

  private:
    using Tags = std::vector<std::string>;
    struct Lookup {
        std::string key;
        std::string artist;
        MainQueue::Duration deadline{};
    };

    void sendNext();
    void send(const Lookup& lookup);
    void finish(const Lookup& lookup, const std::optional<HTTPResponse>& response);
    Tags keepTags(const Lookup& lookup, const HTTPResponse& response);
    void complete(const Lookup& lookup, const Tags& tags);

    HTTPSession& session_;
    MainQueue& queue_;
    const UnicodeText& unicode_;
    SystemLog& log_;

    std::map<std::string, Tags> cache_;                       ///< by lower-cased artist
    std::map<std::string, std::vector<Completion>> underWay_; ///< who waits, by the same key
    std::deque<Lookup> waiting_;                              ///< for their turn to be sent
    MainQueue::Duration nextStart_{};
    Lifetime lifetime_;
    Subscription turn_;
};

} // namespace halvo
