#include "nowplaying/LastFMClient.h"

#include "nowplaying/TagService.h"
#include "platform/HTTPSession.h"
#include "platform/SystemLog.h"
#include "platform/UnicodeText.h"

#include <algorithm>
#include <chrono>

namespace halvo {

using namespace std::chrono_literals;

namespace {

constexpr MainQueue::Duration kTimeout = 5s;
constexpr MainQueue::Duration kBetweenRequests = 1s;
/// Many times the longest answer, and parsed well within a frame.
constexpr std::size_t kLongestAnswer = 256UL * 1024;
constexpr std::size_t kTagsInLog = 8;

std::string joined(const std::vector<std::string>& tags, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < std::min(count, tags.size()); ++i)
        text += (i == 0 ? "" : ", ") + tags[i];
    return text;
}

} // namespace

LastFMClient::LastFMClient(HTTPSession& session, MainQueue& queue, const UnicodeText& unicode,
                           SystemLog& log)
    : session_(session), queue_(queue), unicode_(unicode), log_(log) {}

void LastFMClient::getArtistTags(const std::string& artist, Completion completion) {
    auto key = unicode_.composed(unicode_.lowerCased(artist));
    if (const auto known = cache_.find(key); known != cache_.end()) {
        const Tags tags = known->second; // the cache may grow meanwhile
        return completion(tags);
    }
    if (!hasTagServiceKey()) {
        log_.write("Halvo: Last.fm API key not configured");
        return completion({});
    }
    auto& askers = underWay_[key];
    askers.push_back(std::move(completion));
    if (askers.size() > 1) return;
    waiting_.push_back({std::move(key), artist, queue_.now() + kTimeout});
    sendNext();
}

void LastFMClient::sendNext() {
    while (!waiting_.empty()) {
        const auto now = queue_.now();
        const auto next = waiting_.front();
        if (now < nextStart_ && now < next.deadline) {
            turn_ = queue_.afterCancellable(std::min(nextStart_, next.deadline) - now,
                                            [this] { sendNext(); });
            return;
        }
        waiting_.pop_front();
        if (now >= next.deadline) {
            finish(next, std::nullopt);
            continue;
        }
        nextStart_ = now + kBetweenRequests;
        send(next);
    }
}

void LastFMClient::send(const Lookup& lookup) {
    // Never 0, which would be no limit.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(lookup.deadline - queue_.now());
    session_.get({.url = tagServiceAddress(lookup.artist),
                  .userAgent = userAgent(),
                  .timeout = left,
                  .maximumBytes = kLongestAnswer},
                 [this, alive = lifetime_.watch(), lookup](const auto& response) {
                     if (!alive.expired()) finish(lookup, response);
                 });
}

void LastFMClient::finish(const Lookup& lookup, const std::optional<HTTPResponse>& response) {
    if (response && response->status == 200) return complete(lookup, keepTags(lookup, *response));
    log_.write("Halvo: Last.fm request failed for '" + lookup.artist + "'");
    complete(lookup, {});
}

LastFMClient::Tags LastFMClient::keepTags(const Lookup& lookup, const HTTPResponse& response) {
    auto tags = parseTags(response.body);
    if (!tags) return {};
    for (auto& tag : *tags)
        tag = unicode_.lowerCased(tag);
    cache_[lookup.key] = *tags;
    log_.write("Halvo: Last.fm tags for '" + lookup.artist + "': " + joined(*tags, kTagsInLog));
    return *tags;
}

void LastFMClient::complete(const Lookup& lookup, const Tags& tags) {
    auto askers = std::move(underWay_.extract(lookup.key).mapped());
    for (const auto& completion : askers)
        completion(tags);
}

} // namespace halvo
