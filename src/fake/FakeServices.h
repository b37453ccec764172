#pragma once

#include "fake/CallLog.h"
#include "platform/Alert.h"
#include "platform/Application.h"
#include "platform/AudioHardware.h"
#include "platform/DriverInstallation.h"
#include "platform/FileSystem.h"
#include "platform/StandardOutput.h"
#include "platform/StatusPublisher.h"
#include "platform/SystemLog.h"
#include "platform/TerminationSignal.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace halvo {

class FakeSystemLog final : public SystemLog {
  public:
    void write(const std::string& line) override { lines.push_back(line); }
    std::vector<std::string> lines;
};

class FakeStandardOutput final : public StandardOutput {
  public:
    void print(const std::string& line) override { lines.push_back(line); }
    std::vector<std::string> lines;
};

/// Answers each alert with the next of `answers`, then with the last button.
class FakeAlert final : public Alert {
  public:
    struct Shown {
        AlertStyle style;
        std::string message;
        std::string informativeText;
        std::vector<std::string> buttons;
    };

    std::size_t runModal(AlertStyle style, const std::string& message,
                         const std::string& informativeText,
                         const std::vector<std::string>& buttons) override;

    std::vector<Shown> shown;
    std::vector<std::size_t> answers;
};

/// Files in memory. One thread.
class FakeFileSystem final : public FileSystem {
  public:
    std::optional<std::filesystem::path> applicationSupportDirectory() override { return support; }
    std::filesystem::path temporaryDirectory() override { return "/tmp"; }
    bool exists(const std::filesystem::path& path) override { return files.contains(path); }
    bool createDirectory(const std::filesystem::path& path) override;
    std::optional<std::string> read(const std::filesystem::path& path) override;
    bool write(const std::filesystem::path& path, const std::string& contents) override;
    bool append(const std::filesystem::path& path, const std::string& contents) override;
    bool setAside(const std::filesystem::path& path) override;
    bool remove(const std::filesystem::path& path) override;

    std::optional<std::filesystem::path> support = "/support";
    std::map<std::filesystem::path, std::string> files;
    std::vector<std::filesystem::path> directories;
    std::set<std::filesystem::path>
        full; ///< folders that take nothing; what is there can be removed
    bool writesFail = false;
    int writes = 0;

  private:
    bool takes(const std::filesystem::path& path) const {
        return !writesFail && !full.contains(path.parent_path());
    }
};

/// An installed and a bundled driver, each with its property list's texts, or absent. A copy that
/// succeeds makes the installed one the bundled one.
class FakeDriverInstallation final : public DriverInstallation {
  public:
    using PropertyList = std::map<std::string, std::string>;

    std::filesystem::path installedPath() override { return "/installed.driver"; }
    std::optional<std::filesystem::path> bundledDriverURL() override;
    bool exists(const std::filesystem::path& bundle) override;
    std::optional<std::string> propertyListString(const std::filesystem::path& bundle,
                                                  const std::string& key) override;

    std::string copyTool() override { return "tool"; }
    std::expected<DriverCopyResult, std::string>
    copyWithPrivileges(const std::filesystem::path& source) override;
    void takeUp() override { calls.emplace_back("take up"); }
    void ensureRunning() override { calls.emplace_back("ensure running"); }
    void pause(std::chrono::milliseconds duration) override;

    std::expected<DriverCopyResult, std::string> copyResult = DriverCopyResult{};
    std::vector<std::string> calls; ///< whatever had an effect, in order
    std::optional<PropertyList> installed = PropertyList{{"CFBundleVersion", "1.0"}};
    std::optional<PropertyList> bundled = PropertyList{{"CFBundleVersion", "1.0"}};
};

/// Keeps the handler; the test raises the signal.
class FakeTerminationSignal final : public TerminationSignal {
  public:
    void install(Handler installed) override { handler = installed; }
    Handler handler = nullptr;
};

class FakeStatusPublisher final : public StatusPublisher {
  public:
    void setActivePreset(const std::string& name) override { activePreset = name; }
    void setBandLevels(std::span<const float> levels) override {
        bandLevels.assign(levels.begin(), levels.end());
    }
    std::string activePreset;
    std::vector<float> bandLevels;
};

class FakeApplication final : public Application {
  public:
    void terminate() override { ++terminations; }
    int terminations = 0;
};

} // namespace halvo
