#pragma once

#include "platform/UserDefaults.h"

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>

namespace halvo {

class SystemLog;

/// The user defaults as one JSON object in a file of mode 0600. Every change replaces the file
/// before the call returns. Unknown entries are kept. Main thread.
class JsonUserDefaults final : public UserDefaults {
  public:
    /// $XDG_CONFIG_HOME/halvo/defaults.json, by default under ~/.config.
    static std::filesystem::path standardPath();

    /// Reads the file, if there is one. An unreadable file is renamed to
    /// "<name>.unreadable-<date>", and the log says so; if even that fails, the file stays and
    /// nothing is saved.
    JsonUserDefaults(std::filesystem::path path, SystemLog& log);
    /// What is saved now, for reading: changes never reach the file. Any thread.
    static JsonUserDefaults readOnly(const std::filesystem::path& path);

    ~JsonUserDefaults() override;
    JsonUserDefaults(JsonUserDefaults&&) noexcept;
    JsonUserDefaults& operator=(JsonUserDefaults&&) noexcept;

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
    enum class Access { readOnly, readWrite };

    JsonUserDefaults(std::filesystem::path path, Access access);

    const nlohmann::ordered_json* find(const std::string& key) const;
    void set(const std::string& key, nlohmann::ordered_json value);
    void save() const;

    std::filesystem::path path_;
    Access access_;
    std::unique_ptr<nlohmann::ordered_json> values_;
};

} // namespace halvo
