#pragma once

#include "EventSource.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace halvo::helper {

/// Non-blocking standard output: a slow reader delays the next line, not the loop.
class LineWriter {
  public:
    /// `onIdle` is called when a line that could not be written at once has been written.
    LineWriter(sd_event* event, std::function<void()> onIdle);

    bool isIdle() const { return written_ == line_.size(); }
    /// Only when idle. False when the reader has closed the pipe.
    bool write(std::string line);

  private:
    static int onWritable(sd_event_source* source, int descriptor, std::uint32_t events,
                          void* data);
    bool writeMore();

    std::function<void()> onIdle_;
    std::string line_;
    std::size_t written_ = 0;
    EventSource writable_; ///< none for an output that cannot be polled; such a one never blocks
};

} // namespace halvo::helper
