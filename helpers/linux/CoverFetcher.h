#pragma once

#include "EventSource.h"
#include "linux/process/SpawnedChild.h"
#include "posix/FileDescriptor.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace halvo::helper {

/// Fetches one cover at a time over the network, in a child process that ends with it: this process
/// stays small, and no server can block it.
class CoverFetcher {
  public:
    /// The URL, and the cover's bytes; empty when there is none.
    using Handler = std::function<void(const std::string& url, const std::string& bytes)>;

    CoverFetcher(sd_event* event, Handler handler);
    ~CoverFetcher() { stop(); }
    CoverFetcher(const CoverFetcher&) = delete;
    CoverFetcher& operator=(const CoverFetcher&) = delete;

    /// Cancels the fetch under way. The handler is called later, once, unless this is called again.
    void fetch(const std::string& url);
    void stop();

  private:
    static int onReadable(sd_event_source* source, int descriptor, std::uint32_t events,
                          void* data);
    void read();
    void finish();

    sd_event* event_;
    Handler handler_;
    std::string url_;
    std::string bytes_;
    std::optional<SpawnedChild> program_;
    FileDescriptor output_;
    EventSource readable_;
};

} // namespace halvo::helper
