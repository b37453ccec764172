#pragma once

#include <string>

namespace halvo {

/// Text functions that need Unicode tables. All texts are UTF-8. Any thread.
class UnicodeText {
  public:
    virtual ~UnicodeText() = default;

    /// The text in lower case by the full mapping, whatever the locale; not composed.
    virtual std::string lowerCased(const std::string& text) const = 0;
    /// Normalization form C: canonically equivalent texts become equal bytes.
    virtual std::string composed(const std::string& text) const = 0;
};

} // namespace halvo
