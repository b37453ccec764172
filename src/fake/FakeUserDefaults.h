#pragma once

#include "platform/UserDefaults.h"

#include <map>
#include <variant>

namespace halvo {

/// Settings in memory. `writes` counts every change.
class FakeUserDefaults final : public UserDefaults {
  public:
    struct Data {
        std::string bytes;
    };
    using Value = std::variant<bool, float, double, std::string, Data>;

    bool contains(const std::string& key) const override { return values.contains(key); }
    bool boolForKey(const std::string& key) const override;
    std::optional<double> doubleForKey(const std::string& key) const override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::string> dataForKey(const std::string& key) const override;

    void setBool(const std::string& key, bool value) override { set(key, value); }
    void setFloat(const std::string& key, float value) override { set(key, value); }
    void setDouble(const std::string& key, double value) override { set(key, value); }
    void setString(const std::string& key, const std::string& value) override { set(key, value); }
    void setData(const std::string& key, const std::string& bytes) override {
        set(key, Data{bytes});
    }
    void remove(const std::string& key) override;

    std::map<std::string, Value> values;
    int writes = 0;

  private:
    void set(const std::string& key, Value value);
};

} // namespace halvo
