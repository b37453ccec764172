#include "fake/FakeUserDefaults.h"

namespace halvo {

double FakeUserDefaults::doubleForKey(const std::string& key) const {
    const auto found = values.find(key);
    if (found == values.end()) return 0;
    return std::visit(
        [](const auto& value) -> double {
            if constexpr (requires { static_cast<double>(value); }) {
                return static_cast<double>(value);
            } else {
                return 0;
            }
        },
        found->second);
}

std::optional<std::string> FakeUserDefaults::stringForKey(const std::string& key) const {
    const auto found = values.find(key);
    if (found == values.end() || !std::holds_alternative<std::string>(found->second)) {
        return std::nullopt;
    }
    return std::get<std::string>(found->second);
}

std::optional<std::string> FakeUserDefaults::dataForKey(const std::string& key) const {
    const auto found = values.find(key);
    if (found == values.end() || !std::holds_alternative<Data>(found->second)) return std::nullopt;
    return std::get<Data>(found->second).bytes;
}

void FakeUserDefaults::remove(const std::string& key) {
    ++writes;
    values.erase(key);
}

void FakeUserDefaults::set(const std::string& key, Value value) {
    ++writes;
    values[key] = std::move(value);
}

} // namespace halvo
