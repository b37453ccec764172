#pragma once

#include <string>

namespace halvo {

/// What only the system's tables know about text. All texts are UTF-8. Any thread.
class UnicodeText {
  public:
    virtual ~UnicodeText() = default;

    /// The text in lower case by the full mapping, whatever the locale; not composed.
    virtual std::string lowerCased(const std::string& text) const = 0;
    /// The composed canonical form: texts that are equal to a reader become equal bytes.
    virtual std::string composed(const std::string& text) const = 0;
};

} // namespace halvo
