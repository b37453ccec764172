#pragma once

#include "platform/UnicodeText.h"

namespace halvo {

/// Knows the letters A to Z.
class FakeUnicodeText final : public UnicodeText {
  public:
    std::string lowerCased(const std::string& text) const override {
        std::string lower = text;
        for (char& letter : lower) {
            if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
        }
        return lower;
    }
    std::string composed(const std::string& text) const override { return text; }
};

} // namespace halvo
