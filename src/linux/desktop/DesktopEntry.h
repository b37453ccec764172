#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

/// The text of a desktop file, of which one group is read and changed; every other line stays as
/// it is. Any thread.
class DesktopEntry {
  public:
    explicit DesktopEntry(std::string_view text);

    /// The value of a key of the group [Desktop Entry], as it stands there; nothing without one.
    std::optional<std::string> value(std::string_view key) const;
    /// Whether the key stands there with the value "true" or "1".
    bool isTrue(std::string_view key) const;
    /// Replaces the key's value, or adds the key at the end of its group, which is made if need be.
    void set(std::string_view key, std::string_view value);
    void remove(std::string_view key);

    std::string text() const;

  private:
    /// Behind the last line of the group; the lines' number without one.
    std::size_t groupEnd() const;
    std::optional<std::size_t> find(std::string_view key) const;

    std::vector<std::string> lines_;
    std::optional<std::size_t> groupStart_; ///< the first line after the group's name
};

} // namespace halvo
