#pragma once

#include "platform/Image.h"

namespace halvo {

/// Reads the picture formats that covers come in: JPEG, PNG, GIF, WebP and BMP, as far as the
/// toolkit's plugins are there. Needs no application object.
class QtImageReader final : public ImageReader {
  public:
    /// Refuses pictures of more than 64 million pixels before they are decoded.
    std::optional<Image> read(const std::string& bytes, int longestSide) override;
};

} // namespace halvo
