#pragma once

#include "EventSource.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace halvo::helper {

/// Standard output without waiting: a reader that is slow holds up the next line, not the loop.
class LineWriter {
  public:
    /// `onIdle` is called when a line that had to wait is written.
    LineWriter(sd_event* event, std::function<void()> onIdle);

    bool isIdle() const { return written_ == line_.size(); }
    /// Only when idle. False when nobody reads any more.
    bool write(std::string line);

  private:
    static int onWritable(sd_event_source* source, int descriptor, std::uint32_t events,
                          void* data);
    bool writeMore();

    std::function<void()> onIdle_;
    std::string line_;
    std::size_t written_ = 0;
    EventSource writable_; ///< none where the output cannot be waited for: then it never blocks
};

} // namespace halvo::helper
