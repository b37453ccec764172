#include "linux/files/Autostart.h"

#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>

namespace {

namespace fs = std::filesystem;
using halvo::Autostart;
using halvo::test::contents;
using halvo::test::put;
using halvo::test::TemporaryDirectory;
using halvo::test::WithoutPrivileges;

constexpr const char* kEntryFile = "org.halvo.Halvo.desktop";
const std::string kEntryHead = "[Desktop Entry]\nType=Application\nExec=halvo\n";

/// A private home directory and system directories.
class AutostartTests : public testing::Test {
  protected:
    void SetUp() override {
        set("XDG_CONFIG_HOME", (directory / "user").string());
        set("XDG_CONFIG_DIRS",
            (directory / "none").string() + ":" + (directory / "system").string());
        set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        fs::create_directories(user.parent_path());
        fs::create_directories(system.parent_path());
        autostart.emplace("/bin/sh");
    }
    void TearDown() override {
        for (const auto& [name, value] : before) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }
    void set(const std::string& name, const std::string& value) {
        const char* old = std::getenv(name.c_str());
        before[name] = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        ::setenv(name.c_str(), value.c_str(), 1);
    }

    TemporaryDirectory directory;
    fs::path user = directory.path() / "user" / "autostart" / kEntryFile;
    fs::path system = directory.path() / "system" / "autostart" / kEntryFile;
    std::map<std::string, std::optional<std::string>> before;
    std::optional<Autostart> autostart; ///< after the environment is set
};

struct State {
    const char* name;
    std::optional<std::string> user;
    std::optional<std::string> system;
    bool enabled;
};

const State kStates[] = {
    {"nothing", {}, {}, false},
    {"the user's", kEntryHead, {}, true},
    {"the system's", {}, kEntryHead, true},
    {"the user's hides the system's", "[Desktop Entry]\nHidden=true\n", kEntryHead, false},
    {"switched off by the session", kEntryHead + "X-GNOME-Autostart-enabled=false\n", kEntryHead,
     false},
    {"switched on by the session", kEntryHead + "X-GNOME-Autostart-enabled = true \n", {}, true},
    {"what it starts is gone", kEntryHead + "TryExec=/nowhere/halvo\n", {}, false},
    {"what it starts is there", kEntryHead + "TryExec=sh\n", {}, true},
    {"for another desktop", kEntryHead + "OnlyShowIn=KDE;XFCE;\n", {}, false},
    {"for this desktop", kEntryHead + "OnlyShowIn=KDE;GNOME;\n", {}, true},
    {"not for this desktop", kEntryHead + "NotShowIn=GNOME\n", {}, false},
    {"starts nothing", "[Desktop Entry]\nType=Application\n", {}, false},
    {"a key of another group", kEntryHead + "\n[Desktop Action x]\nHidden=true\n", {}, true},
    {"a key that is a remark", kEntryHead + "#Hidden=true\n", {}, true},
};

TEST_F(AutostartTests, TellsWhatTheDesktopWouldDo) {
    for (const auto& state : kStates) {
        SCOPED_TRACE(state.name);
        fs::remove(user);
        fs::remove(system);
        if (state.user) put(user, *state.user);
        if (state.system) put(system, *state.system);
        ASSERT_EQ(autostart->isEnabled(), state.enabled);
        // From each state it can be switched on and off.
        for (const bool enabled : {!state.enabled, state.enabled}) {
            EXPECT_TRUE(autostart->setEnabled(enabled));
            EXPECT_EQ(autostart->isEnabled(), enabled) << contents(user);
        }
    }
    fs::remove(user);
    put(system, kEntryHead);
    fs::create_symlink("/dev/null", user);
    EXPECT_FALSE(autostart->isEnabled());
    EXPECT_FALSE(autostart->setEnabled(true)) << "a user's own link is not followed";
    EXPECT_TRUE(fs::is_symlink(user));
}

TEST_F(AutostartTests, KeepsWhatOthersWrote) {
    const std::string foreign = "# mine\n[Desktop Entry]\nType=Application\nExec=halvo --own\n"
                                "Name[de]=Entzerrer\nX-Delay=5\n\n[Desktop Action quit]\nExec=x\n";
    put(user, foreign);
    ASSERT_TRUE(autostart->setEnabled(false));
    auto hidden = foreign;
    hidden.insert(hidden.find("\n\n") + 1, "Hidden=true\n");
    EXPECT_EQ(contents(user), hidden);
    ASSERT_TRUE(autostart->setEnabled(true));
    EXPECT_EQ(contents(user), foreign);
}

TEST_F(AutostartTests, LeavesNothingOfItsOwn) {
    fs::remove_all(user.parent_path());
    ASSERT_TRUE(autostart->setEnabled(true));
    EXPECT_TRUE(contents(user).contains("Exec=\"/bin/sh\"\n"));
    ASSERT_TRUE(autostart->setEnabled(false));
    EXPECT_FALSE(fs::exists(user));
}

TEST_F(AutostartTests, AFailureLeavesTheTrueState) {
    put(user, kEntryHead);
    fs::permissions(user, fs::perms{0444});
    fs::permissions(user.parent_path(), fs::perms{0555});
    const WithoutPrivileges plain;
    EXPECT_FALSE(autostart->setEnabled(false));
    EXPECT_TRUE(autostart->isEnabled());
}

} // namespace
