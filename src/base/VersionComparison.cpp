#include "base/VersionComparison.h"

#include <algorithm>

namespace halvo {

namespace {

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Takes the run of digits at the front of `text` and returns it without leading zeros.
std::string_view takeNumber(std::string_view& text) {
    const auto end = std::ranges::find_if_not(text, isDigit);
    auto number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

int compareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

} // namespace

int compareVersions(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            if (const int order = compareNumbers(takeNumber(a), takeNumber(b))) return order;
            continue;
        }
        if (a.front() != b.front()) return a.front() < b.front() ? -1 : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

} // namespace halvo
