#pragma once

#include "EventSource.h"
#include "linux/process/SpawnedChild.h"
#include "posix/FileDescriptor.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace halvo::helper {

/// Fetches one cover at a time over the network, in a program of its own that ends with it: this
/// one stays small, and whatever a server does holds nobody up.
class CoverFetcher {
  public:
    /// The address, and the cover's bytes; empty when there is none.
    using Handler = std::function<void(const std::string& url, const std::string& bytes)>;

    CoverFetcher(sd_event* event, Handler handler);
    ~CoverFetcher() { stop(); }
    CoverFetcher(const CoverFetcher&) = delete;
    CoverFetcher& operator=(const CoverFetcher&) = delete;

    /// Gives up the one under way. The handler is called later, once, unless this is called again.
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
