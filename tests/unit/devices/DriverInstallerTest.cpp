#include "devices/DriverInstaller.h"
#include "devices/DriverCopyCommand.h"
#include "fake/FakePlatform.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace halvo;

namespace {

using List = FakeDriverInstallation::PropertyList;
using Lines = std::vector<std::string>;

constexpr std::size_t kInstall = 0; // the first button

class Installer : public testing::Test {
  protected:
    FakePlatform fake;
    DriverInstaller installer{fake.driverInstallation, fake.alert, fake.systemLog};
    FakeDriverInstallation& system = fake.driverInstallation;
    Lines& log = fake.systemLog.lines;

    void forget() {
        system.calls.clear();
        fake.alert.shown.clear();
        log.clear();
    }
};

List version(const std::string& text) {
    return {{"CFBundleVersion", text}};
}

} // namespace

TEST_F(Installer, UpdatesWhatIsOlderOrCannotBeRead) {
    const struct {
        const char* name;
        std::optional<List> installed;
        std::optional<List> bundled;
        bool needsUpdate;
    } rows[] = {
        {"numbers, not digits", version("1.9"), version("1.10"), true},
        {"an installed one that is newer stays", version("2.0"), version("1.9"), false},
        {"the same", version("1.9"), version("1.9"), false},
        {"longer", version("1.0"), version("1.0.0"), true},
        {"shorter", version("1.0.0"), version("1.0"), false},
        {"more digits than any integer has", version("9"), version("20250101123456789012"), true},
        {"fewer", version("20250101123456789012"), version("20250101123456789011"), false},
        {"installed without a version", List{}, version("1.0"), true},
        {"bundled without a version", version("1.0"), List{}, false},
        {"both without", List{}, List{}, true},
        {"nothing installed", std::nullopt, version("1.0"), false},
        {"nothing bundled", version("1.0"), std::nullopt, false},
        {"nothing bundled, installed unreadable", List{}, std::nullopt, false},
    };
    for (const auto& [name, installed, bundled, needsUpdate] : rows) {
        system.installed = installed;
        system.bundled = bundled;
        EXPECT_EQ(installer.needsUpdate(), needsUpdate) << name;
    }
}

TEST_F(Installer, AsksForWhatIsNeededAndNothingElse) {
    const std::string upToDate = "Halvo: Driver already installed and up to date";
    const struct {
        const char* name;
        std::optional<List> installed;
        std::optional<List> bundled;
        bool result;
        Lines log;
        const char* action; ///< that the person is asked for; null: is not asked
    } rows[] = {
        {"up to date", version("1"), version("1"), true, {upToDate}, nullptr},
        {"newer", version("2.0"), version("1.9"), true, {upToDate}, nullptr},
        {"no copy of its own, although one is installed",
         version("1"),
         std::nullopt,
         false,
         {"Halvo: Bundled driver not found in app resources"},
         nullptr},
        {"no copy at all",
         std::nullopt,
         std::nullopt,
         false,
         {"Halvo: Bundled driver not found in app resources"},
         nullptr},
        {"missing",
         std::nullopt,
         version("1"),
         false,
         {"Halvo: Driver install needed", "Halvo: User cancelled driver install"},
         "install"},
        {"old",
         version("1"),
         version("2"),
         false,
         {"Halvo: Driver update needed", "Halvo: User cancelled driver update"},
         "update"},
        {"without a version",
         List{},
         version("1"),
         false,
         {"Halvo: Driver update needed", "Halvo: User cancelled driver update"},
         "update"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        forget();
        system.installed = row.installed;
        system.bundled = row.bundled;
        EXPECT_EQ(installer.installIfNeeded(), row.result);
        EXPECT_EQ(log, row.log);
        EXPECT_EQ(system.calls, Lines{});
        ASSERT_EQ(fake.alert.shown.size(), row.action != nullptr ? 1U : 0U);
        if (row.action == nullptr) continue;
        const auto& [style, message, text, buttons] = fake.alert.shown.front();
        EXPECT_EQ(style, AlertStyle::informational);
        EXPECT_EQ(message, "Halvo Audio Driver");
        EXPECT_EQ(text, std::string("Halvo needs to ") + row.action +
                            " its audio driver to capture system audio. You'll be prompted for "
                            "your administrator password.");
        EXPECT_EQ(buttons, (Lines{"Install Driver", "Quit"}));
    }
}

TEST_F(Installer, EveryEndOfTheCopyIsToldApart) {
    const std::string failed =
        "Driver installation failed. Please try again or install manually.\n\n";
    const std::string canceled = "0:97: execution error: User canceled. (-128)\n";
    const struct {
        const char* name;
        std::expected<DriverCopyResult, std::string> copy;
        bool result;
        const char* log;
        std::optional<std::string> alert;
        Lines calls; ///< after the copy
    } rows[] = {
        {"in place",
         DriverCopyResult{0, "noise", false},
         true,
         "Halvo: Driver installed successfully",
         std::nullopt,
         {"take up", "pause 2000"}},
        {"not launchable",
         std::unexpected("No such file or directory"),
         false,
         "Halvo: Failed to launch tool: No such file or directory",
         "Failed to start the installer: No such file or directory",
         {}},
        {"cancelled",
         DriverCopyResult{1, canceled, false},
         false,
         "Halvo: Driver install failed (exit 1): 0:97: execution error: User canceled. (-128)\n",
         std::nullopt,
         {}},
        {"dismissed",
         DriverCopyResult{126, "Dismissed", true},
         false,
         "Halvo: Driver install failed (exit 126): Dismissed",
         std::nullopt,
         {}},
        {"not authorised",
         DriverCopyResult{127, "Not authorized", false},
         false,
         "Halvo: Driver install failed (exit 127): Not authorized",
         failed + "Not authorized",
         {}},
        {"another spelling",
         DriverCopyResult{1, "User cancelled", false},
         false,
         "Halvo: Driver install failed (exit 1): User cancelled",
         failed + "User cancelled",
         {}},
        {"silent",
         DriverCopyResult{2, "", false},
         false,
         "Halvo: Driver install failed (exit 2): ",
         failed,
         {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        forget();
        system.installed.reset();
        system.copyResult = row.copy;
        fake.alert.answers = {kInstall};
        EXPECT_EQ(installer.installIfNeeded(), row.result);
        EXPECT_EQ(log, (Lines{"Halvo: Driver install needed", row.log}));
        Lines calls{"copy /bundled.driver"};
        calls.insert(calls.end(), row.calls.begin(), row.calls.end());
        EXPECT_EQ(system.calls, calls);
        ASSERT_EQ(fake.alert.shown.size(), row.alert ? 2U : 1U);
        if (!row.alert) continue;
        EXPECT_EQ(fake.alert.shown.back().style, AlertStyle::critical);
        EXPECT_EQ(fake.alert.shown.back().message, "Driver Installation Error");
        EXPECT_EQ(fake.alert.shown.back().informativeText, *row.alert);
    }
}

TEST(DriverCopyCommandTest, ReachesTheShellThroughTheScriptIntact) {
    const auto shell = driverCopyShellCommand(
        "/Apps/a \"b\" \\c/HalvoAudioDevice.driver", "/Library/Audio/Plug-Ins/HAL",
        "/Library/Audio/Plug-Ins/HAL/HalvoAudioDevice.driver");
    EXPECT_EQ(shell, "mkdir -p '/Library/Audio/Plug-Ins/HAL' && "
                     "rm -rf '/Library/Audio/Plug-Ins/HAL/HalvoAudioDevice.driver' && "
                     "cp -R '/Apps/a \"b\" \\c/HalvoAudioDevice.driver' "
                     "'/Library/Audio/Plug-Ins/HAL/HalvoAudioDevice.driver' && "
                     "chown -R root:wheel '/Library/Audio/Plug-Ins/HAL/HalvoAudioDevice.driver' && "
                     "killall coreaudiod 2>/dev/null; true");
    const auto script = administratorScript("say \\\"x\\\"");
    EXPECT_EQ(script.program, "/usr/bin/osascript");
    EXPECT_EQ(script.arguments,
              (Lines{"-e", R"(do shell script "say \\\"x\\\"" with administrator privileges)"}));
}
