#pragma once

#include "platform/UserDefaults.h"

#include <CoreFoundation/CoreFoundation.h>

namespace halvo {

/// The application's preferences domain, in its helpers, too. A value keeps its type: a float is
/// stored as a 32-bit number, data as data. Any thread.
class MacUserDefaults final : public UserDefaults {
  public:
    bool contains(const std::string& key) const override;
    bool boolForKey(const std::string& key) const override;
    std::optional<double> doubleForKey(const std::string& key) const override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::string> dataForKey(const std::string& key) const override;

    void setBool(const std::string& key, bool value) override;
    /// A number that is not finite changes nothing.
    void setFloat(const std::string& key, float value) override;
    /// A number that is not finite changes nothing.
    void setDouble(const std::string& key, double value) override;
    void setString(const std::string& key, const std::string& value) override;
    void setData(const std::string& key, const std::string& bytes) override;
    void remove(const std::string& key) override;

  private:
    /// Null removes the key.
    static void set(const std::string& key, CFPropertyListRef value);
};

} // namespace halvo
