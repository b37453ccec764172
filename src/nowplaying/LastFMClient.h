#pragma once

#include "base/Lifetime.h"
#include "base/Subscription.h"
#include "platform/MainQueue.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class HTTPSession;
class SystemLog;
class UnicodeText;
struct HTTPResponse;

/// Asks the tag service for an artist's tags, politely: once per artist and process, one request a
/// second, one for all who ask for the same artist meanwhile, and none that nobody waits for any
/// more. Of those that wait for their turn the newest goes first. Main thread only.
class LastFMClient {
  public:
    /// The tags that enough listeners gave, in lower case and the service's order.
    using Completion = std::function<void(const std::vector<std::string>& tags)>;

    LastFMClient(HTTPSession& session, MainQueue& queue, const UnicodeText& unicode,
                 SystemLog& log);

    /// Calls `completion` once, unless the subscription ends first: within the call when the answer
    /// is known, else within 5 seconds from when the request goes out, with nothing when the
    /// service gave none; such a failure is tried anew the next time.
    Subscription getArtistTags(const std::string& artist, Completion completion);

  private:
    using Tags = std::vector<std::string>;
    struct Lookup {
        std::string key;
        std::string artist;
    };
    /// An asker's subscription alone keeps its completion.
    using Askers = std::vector<std::weak_ptr<const Completion>>;

    void sendNext();
    bool isAwaited(const Lookup& lookup) const;
    void send(const Lookup& lookup);
    void finish(const Lookup& lookup, const std::optional<HTTPResponse>& response);
    Tags keepTags(const Lookup& lookup, const HTTPResponse& response);
    void complete(const Lookup& lookup, const Tags& tags);

    HTTPSession& session_;
    MainQueue& queue_;
    const UnicodeText& unicode_;
    SystemLog& log_;

    std::map<std::string, Tags> cache_;      ///< by lower-cased artist
    std::map<std::string, Askers> underWay_; ///< by the same key
    std::vector<Lookup> waiting_;            ///< for their turn to be sent; the newest last
    MainQueue::Duration nextStart_{};
    Lifetime lifetime_;
    Subscription turn_;
};

} // namespace halvo
