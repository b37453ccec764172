#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// A picture in memory: rows from the top, pixels as premultiplied ARGB. Cheap to copy.
struct Image {
    int width = 0;
    int height = 0;
    std::shared_ptr<const std::vector<std::uint32_t>> pixels;

    bool operator==(const Image&) const = default; ///< the same picture, not an equal one
};

/// Reads picture files. Any thread.
class ImageReader {
  public:
    virtual ~ImageReader() = default;

    /// The picture in `bytes`, scaled down to at most `longestSide` pixels; nothing when it is not
    /// a readable picture or its original size is unreasonably large.
    virtual std::optional<Image> read(const std::string& bytes, int longestSide) = 0;
};

} // namespace halvo
