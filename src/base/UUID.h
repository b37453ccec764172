#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace halvo {

/// A 128-bit identifier. Its text is 36 characters, 8-4-4-4-12, in upper case. Any thread.
class UUID {
  public:
    /// A new random identifier (version 4).
    static UUID random();
    /// Reads 8-4-4-4-12 in either case; anything else, braces included, gives nothing.
    static std::optional<UUID> parse(std::string_view text);

    std::string text() const;

    bool operator==(const UUID&) const = default;

  private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace halvo
