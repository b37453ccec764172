#include "fake/FakeUserDefaults.h"

#include "base/TextValues.h"

namespace halvo {

bool FakeUserDefaults::boolForKey(const std::string& key) const {
    if (const auto text = stringForKey(key)) return boolOfText(*text);
    const auto found = values.find(key);
    if (found == values.end()) return false;
    const auto* flag = std::get_if<bool>(&found->second);
    return flag ? *flag : doubleForKey(key).value_or(0) != 0;
}

std::optional<double> FakeUserDefaults::doubleForKey(const std::string& key) const {
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    if (const auto* number = std::get_if<float>(&found->second)) {
        return static_cast<double>(*number);
    }
    const auto* number = std::get_if<double>(&found->second);
    return number ? std::optional(*number) : std::nullopt;
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
