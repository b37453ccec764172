#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace halvo {

struct HTTPRequest {
    std::string url;
    std::string userAgent;
    /// Limit for the whole exchange, even while data still arrives.
    std::chrono::milliseconds timeout{0};
    std::size_t maximumBytes = 0; ///< a longer body counts as a failure
};

struct HTTPResponse {
    int status = 0;
    std::string body;
};

/// Requests over the network. Main thread only; never blocks.
class HTTPSession {
  public:
    /// Nothing on failure: refused, timed out, too large, not trusted.
    using Completion = std::function<void(std::optional<HTTPResponse>)>;

    virtual ~HTTPSession() = default;

    /// Starts a GET; `completion` runs once, later, on the main thread.
    virtual void get(const HTTPRequest& request, Completion completion) = 0;
};

} // namespace halvo
