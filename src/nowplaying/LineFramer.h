#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace halvo {

/// Splits a byte stream into lines, in bounded memory. One thread.
class LineFramer {
  public:
    /// Drops a line of more than `limit` bytes, up to its line feed.
    explicit LineFramer(std::size_t limit) : limit_(limit) {}

    /// Calls `onLine` with each line that ends in these bytes, without its line feed, and
    /// `onDropped` once for each line that is too long.
    void append(std::string_view bytes, const std::function<void(std::string)>& onLine,
                const std::function<void()>& onDropped);

  private:
    /// Whether the piece still fits.
    bool keep(std::string_view piece);

    std::size_t limit_;
    std::string dataBuffer_; ///< the incomplete line
    bool isDropping_ = false;
};

} // namespace halvo
