#pragma once

#include "base/TextValues.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace halvo {

/// Typed settings that survive the process. Main thread only. A write is on its way to storage
/// when the call returns; a failed write is silent and keeps the value in memory.
///
/// A missing key, or one whose value is of another kind, reads as false, 0 or nothing; a number
/// reads as a bool by being other than 0, a bool as a float by being 1 or 0, and a text as either,
/// as base/TextValues.h says.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual bool contains(const std::string& key) const = 0;
    virtual bool boolForKey(const std::string& key) const = 0;
    float floatForKey(const std::string& key) const {
        const auto text = stringForKey(key);
        const double other = text ? numberOfText(*text) : boolForKey(key) ? 1 : 0;
        const double value = doubleForKey(key).value_or(other);
        const bool fits =
            std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max());
        return fits ? static_cast<float>(value) : 0;
    }
    /// Numbers alone: not even a bool counts as one.
    virtual std::optional<double> doubleForKey(const std::string& key) const = 0;
    virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;
    /// Bytes, kept apart from text.
    virtual std::optional<std::string> dataForKey(const std::string& key) const = 0;

    virtual void setBool(const std::string& key, bool value) = 0;
    virtual void setFloat(const std::string& key, float value) = 0;
    virtual void setDouble(const std::string& key, double value) = 0;
    virtual void setString(const std::string& key, const std::string& value) = 0;
    virtual void setData(const std::string& key, const std::string& bytes) = 0;
    virtual void remove(const std::string& key) = 0;
};

} // namespace halvo
