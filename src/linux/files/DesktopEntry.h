#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

/// The text of a desktop file. Reads and changes one group; other lines are kept. Any thread.
class DesktopEntry {
  public:
    explicit DesktopEntry(std::string_view text);

    /// The raw value of a key in the group [Desktop Entry]; nothing without one.
    std::optional<std::string> value(std::string_view key) const;
    /// Whether the key's value is "true" or "1".
    bool isTrue(std::string_view key) const;
    /// Replaces the key's value, or adds the key at the end of the group, creating the group if
    /// needed.
    void set(std::string_view key, std::string_view value);
    void remove(std::string_view key);

    std::string text() const;

  private:
    /// The index after the group's last line; the number of lines without a group.
    std::size_t groupEnd() const;
    std::optional<std::size_t> find(std::string_view key) const;

    std::vector<std::string> lines_;
    std::optional<std::size_t> groupStart_; ///< the first line after the group's name
};

} // namespace halvo
