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

constexpr std::chrono::milliseconds kTimeout = 5s;
constexpr MainQueue::Duration kBetweenRequests = 1s;
/// Many times the longest answer, yet parsed in less than a frame.
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

Subscription LastFMClient::getArtistTags(const std::string& artist, Completion completion) {
    auto key = unicode_.composed(unicode_.lowerCased(artist));
    if (const auto known = cache_.find(key); known != cache_.end()) {
        const Tags tags = known->second; // the cache may grow meanwhile
        completion(tags);
        return {};
    }
    if (!hasTagServiceKey()) {
        log_.write("Halvo: Last.fm API key not configured");
        completion({});
        return {};
    }
    auto asker = std::make_shared<const Completion>(std::move(completion));
    auto& askers = underWay_[key];
    askers.push_back(asker);
    const auto queued = std::ranges::find(waiting_, key, &Lookup::key);
    if (queued != waiting_.end()) {
        std::rotate(queued, queued + 1, waiting_.end()); // once more the newest
    } else if (askers.size() == 1) {
        waiting_.push_back({std::move(key), artist});
    }
    sendNext();
    return Subscription([asker = std::move(asker)]() mutable { asker.reset(); });
}

void LastFMClient::sendNext() {
    while (!waiting_.empty()) {
        const auto now = queue_.now();
        if (now < nextStart_) {
            turn_ = queue_.afterCancellable(nextStart_ - now, [this] { sendNext(); });
            return;
        }
        const auto newest = std::move(waiting_.back());
        waiting_.pop_back();
        if (!isAwaited(newest)) {
            underWay_.erase(newest.key);
            continue;
        }
        nextStart_ = now + kBetweenRequests;
        send(newest);
    }
}

bool LastFMClient::isAwaited(const Lookup& lookup) const {
    return std::ranges::any_of(underWay_.at(lookup.key),
                               [](const auto& asker) { return !asker.expired(); });
}

void LastFMClient::send(const Lookup& lookup) {
    session_.get({.url = tagServiceAddress(lookup.artist),
                  .userAgent = userAgent(),
                  .timeout = kTimeout,
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
    for (const auto& asker : askers) {
        if (const auto completion = asker.lock()) (*completion)(tags);
    }
}

} // namespace halvo
