#include "linux/files/DesktopEntry.h"

#include <cstddef>
#include <utility>

namespace halvo {

namespace {

constexpr std::string_view kGroup = "[Desktop Entry]";
constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

} // namespace

DesktopEntry::DesktopEntry(std::string_view text) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        lines_.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!groupStart_ && trimmed(lines_.back()) == kGroup) groupStart_ = lines_.size();
    }
}

std::size_t DesktopEntry::groupEnd() const {
    std::size_t end = groupStart_.value_or(lines_.size());
    while (end < lines_.size() && !trimmed(lines_[end]).starts_with('['))
        ++end;
    return end;
}

std::optional<std::size_t> DesktopEntry::find(std::string_view key) const {
    for (std::size_t i = groupStart_.value_or(lines_.size()); i < groupEnd(); ++i) {
        const std::string_view line = lines_[i];
        const auto equals = line.find('=');
        if (equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key) return i;
    }
    return std::nullopt;
}

std::optional<std::string> DesktopEntry::value(std::string_view key) const {
    const auto found = find(key);
    if (!found) return std::nullopt;
    const std::string_view line = lines_[*found];
    return std::string(trimmed(line.substr(line.find('=') + 1)));
}

bool DesktopEntry::isTrue(std::string_view key) const {
    const auto text = value(key);
    return text == "true" || text == "1";
}

void DesktopEntry::set(std::string_view key, std::string_view value) {
    std::string line(key);
    line.append("=").append(value);
    if (const auto found = find(key)) {
        lines_[*found] = std::move(line);
        return;
    }
    if (!groupStart_) {
        lines_.emplace_back(kGroup);
        groupStart_ = lines_.size();
    }
    auto end = groupEnd();
    while (end > *groupStart_ && trimmed(lines_[end - 1]).empty())
        --end; // blank lines stay between the groups
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(end), std::move(line));
}

void DesktopEntry::remove(std::string_view key) {
    if (const auto found = find(key))
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(*found));
}

std::string DesktopEntry::text() const {
    std::string result;
    for (const auto& line : lines_)
        result.append(line).append("\n");
    return result;
}

} // namespace halvo
