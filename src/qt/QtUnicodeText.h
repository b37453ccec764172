#pragma once

#include "platform/UnicodeText.h"

namespace halvo {

/// The toolkit's Unicode tables.
class QtUnicodeText final : public UnicodeText {
  public:
    std::string lowerCased(const std::string& text) const override;
    std::string composed(const std::string& text) const override;
};

} // namespace halvo
