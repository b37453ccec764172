#include "devices/DriverInstaller.h"
#include "fake/FakeServices.h"
#include "linux/process/LinuxDriverInstallation.h"

#include "unit/linux/TemporaryDirectory.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using namespace halvo;
using halvo::test::put;
using halvo::test::TemporaryDirectory;

/// The system's own, without the two seconds.
class Installation final : public LinuxDriverInstallation {
  public:
    using LinuxDriverInstallation::LinuxDriverInstallation;
    void pause(std::chrono::milliseconds duration) override { paused += duration; }
    std::chrono::milliseconds paused{0};
};

/// A system of its own with a driver to install, and programs that stand for the desktop's.
class DriverCopy : public testing::Test {
  protected:
    const TemporaryDirectory top;
    // A name that needs quoting.
    const fs::path prefix = top / R"(it's "a" $(touch injected) `b` \ ; )";
    const fs::path root = top / "root";
    const fs::path tools = top / "tools";
    const fs::path source = prefix / "bin/HalvoAudioDevice.driver";
    const fs::path installed = root / "usr/lib/halvo/HalvoAudioDevice.driver";
    const fs::path dropIn = root / "usr/share/pipewire/pipewire.conf.d/60-halvo.conf";
    const fs::path told = top / "told"; ///< the arguments of driver and systemctl
    Installation installation{prefix / "bin", root};
    FakeAlert alert;
    FakeSystemLog log;
    std::string path = std::getenv("PATH");

    void SetUp() override {
        fs::create_directories(source / "Contents/Linux");
        fs::create_directories(source / "Contents/Resources");
        for (const auto& folder : {root, tools, top / "broken", top / "elsewhere"})
            fs::create_directories(folder);
        put(source / "Contents/Info.plist", list("2"));
        put(source / "Contents/Resources/60-halvo.conf", "drop-in");
        program(source / "Contents/Linux/halvo-audio-device",
                "echo driver \"$@\" >>" + told.string());
        fs::permissions(source, fs::perms::owner_all); // as under a strict umask
        // Only root can give files away; there the real one runs.
        if (::geteuid() != 0) program(tools / "chown", "exit 0");
        program(tools / "systemctl", "exit 1");
        program(top / "broken/cp", "echo cp: broken; exit 127");
        setPrompt("exec \"$@\"");
        ::setenv("PATH", tools.c_str(), 1);
    }
    void TearDown() override { ::setenv("PATH", path.c_str(), 1); }

    static std::string list(const std::string& version) {
        return "<plist><dict><key>CFBundleVersion</key><string>" + version +
               "</string></dict></plist>";
    }
    static void program(const fs::path& file, const std::string& body) {
        put(file, "#!/bin/sh\n" + body + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    void setPrompt(const std::string& body) {
        program(tools / "pkexec",
                "PATH=" + tools.string() + ":/usr/sbin:/usr/bin:/sbin:/bin\n" + body);
    }
    bool install() {
        alert.shown.clear();
        alert.answers = {0};
        log.lines.clear();
        return DriverInstaller(installation, alert, log).installIfNeeded();
    }
    static std::string contents(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// The text below the alert's own sentence; nothing when there was no alert.
    std::optional<std::string> complaint() const {
        if (alert.shown.size() < 2) return std::nullopt;
        const auto& text = alert.shown.back().informativeText;
        const auto end = text.find("\n\n");
        return end == std::string::npos ? text : text.substr(end + 2);
    }
};

TEST_F(DriverCopy, PutsBundleAndDropInInPlaceForEverybody) {
    ASSERT_TRUE(install()) << complaint().value_or("");
    EXPECT_EQ(log.lines.back(), "Halvo: Driver installed successfully");
    EXPECT_EQ(complaint(), std::nullopt);
    EXPECT_EQ(installation.paused, std::chrono::seconds(2));
    EXPECT_EQ(installation.propertyListString(installed, "CFBundleVersion"), "2");
    EXPECT_EQ(contents(dropIn), "drop-in");
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        struct stat status{};
        ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
        const bool isProgram = entry.path().filename() == "halvo-audio-device";
        EXPECT_EQ(status.st_mode & 0777U, entry.is_directory() || isProgram ? 0755U : 0644U)
            << entry.path();
        EXPECT_EQ(status.st_uid, ::geteuid()) << entry.path();
    }
    EXPECT_EQ(contents(told), "driver --end\ndriver --start\n") << "nobody manages the server";
    EXPECT_FALSE(fs::exists("injected"));

    put(source / "Contents/Info.plist", list("3"));
    put(installed / "left over", "");
    ASSERT_TRUE(install()) << "an update";
    EXPECT_EQ(installation.propertyListString(installed, "CFBundleVersion"), "3");
    EXPECT_FALSE(fs::exists(installed / "left over"));
    EXPECT_FALSE(fs::exists(installed.string() + ".new"));
    ASSERT_TRUE(install());
    EXPECT_EQ(log.lines.back(), "Halvo: Driver already installed and up to date");
}

TEST_F(DriverCopy, TheUsersOwnServerIsRestartedWhereItIsManaged) {
    program(tools / "systemctl", "echo \"$@\" >>" + told.string());
    ASSERT_TRUE(install());
    EXPECT_EQ(contents(told), "--user is-active --quiet pipewire.service\n"
                              "--user restart pipewire.service\n");
    fs::remove(told);
    installation.ensureRunning();
    EXPECT_EQ(contents(told), "driver --start\n");
    fs::remove(told);
    ::setenv("HALVO_DRIVER_BUNDLE", installed.c_str(), 1);
    installation.ensureRunning();
    ::unsetenv("HALVO_DRIVER_BUNDLE");
    EXPECT_FALSE(fs::exists(told)) << "a named bundle is started by its user";
}

TEST_F(DriverCopy, EveryFailureIsToldApart) {
    const struct {
        const char* name;
        const char* prompt;
        const char* log;
        std::optional<std::string> complaint;
    } rows[] = {
        {"dismissed", "echo Dismissed >&2; exit 126",
         "Halvo: Driver install failed (exit 126): Dismissed\n", std::nullopt},
        {"not authorised", "echo out; echo Not authorized >&2; exit 127",
         "Halvo: Driver install failed (exit 127): out\nNot authorized\n", "out\nNot authorized\n"},
        {"killed", "kill -9 $$", "Halvo: Driver install failed (exit 137): ", ""},
        {"no text", "printf 'a\\377b'; exit 3", "Halvo: Driver install failed (exit 3): ", ""},
    };
    for (const auto& [name, prompt, line, expected] : rows) {
        SCOPED_TRACE(name);
        setPrompt(prompt);
        EXPECT_FALSE(install());
        EXPECT_EQ(log.lines.back(), line);
        EXPECT_EQ(complaint(), expected);
    }
    EXPECT_FALSE(fs::exists(told)) << "nothing is restarted for nothing";
    EXPECT_EQ(installation.paused.count(), 0);

    fs::remove(tools / "pkexec");
    EXPECT_FALSE(install());
    EXPECT_EQ(log.lines.back(), "Halvo: Failed to launch pkexec: pkexec: command not found");
    EXPECT_EQ(complaint(), "Failed to start the installer: pkexec: command not found");
    put(tools / "pkexec", "\177rubbish");
    fs::permissions(tools / "pkexec", fs::perms::owner_all);
    EXPECT_FALSE(install());
    EXPECT_TRUE(complaint().value_or("").starts_with("Failed to start the installer: "));
}

TEST_F(DriverCopy, ReadsMoreThanAPipeHoldsFromBothStreams) {
    setPrompt("head -c 500000 /dev/zero | tr '\\0' o\n"
              "head -c 500000 /dev/zero | tr '\\0' e >&2; exit 1");
    EXPECT_FALSE(install());
    const auto text = complaint().value_or("");
    EXPECT_EQ(std::ranges::count(text, 'o'), 500000);
    EXPECT_EQ(std::ranges::count(text, 'e'), 500000);
}

TEST_F(DriverCopy, AFailedCopyIsNoSuccessAndLeavesTheOldDriver) {
    fs::create_directories(installed / "Contents");
    put(installed / "Contents/Info.plist", list("1"));
    const std::string elsewhere = top / "elsewhere";
    const std::string words = R"(set -- "$1" "$2" "$3" "$4" )";
    const std::string run = "; exec \"$@\"";
    const struct {
        const char* name;
        std::string prompt;
        std::string reason;
    } rows[] = {
        {"a step that fails", "PATH=" + (top / "broken").string() + ":$PATH" + run, "cp: broken"},
        {"no source", words + R"(/none "$6" "$7")" + run, "/none"},
        {"no place for a driver", words + R"("$5" )" + elsewhere + R"( "$7")" + run,
         "no place for a driver: " + elsewhere},
    };
    for (const auto& [name, prompt, reason] : rows) {
        SCOPED_TRACE(name);
        setPrompt(prompt);
        EXPECT_FALSE(install());
        EXPECT_TRUE(log.lines.back().starts_with("Halvo: Driver install failed (exit 1): "))
            << log.lines.back();
        EXPECT_NE(complaint().value_or("").find(reason), std::string::npos);
        EXPECT_EQ(installation.propertyListString(installed, "CFBundleVersion"), "1");
        EXPECT_FALSE(fs::exists(installed.string() + ".new"));
    }
    EXPECT_TRUE(fs::exists(elsewhere));
    EXPECT_EQ(installation.paused.count(), 0);
}

TEST_F(DriverCopy, AReadOnlySystemIsNoSuccess) {
    if (std::system("/usr/bin/unshare -m /bin/true 2>/dev/null") != 0) {
        GTEST_SKIP() << "no mounts of its own here";
    }
    const std::string at = root;
    setPrompt("exec unshare -m sh -c 'mount --bind " + at + " " + at +
              " && mount -o remount,bind,ro " + at + " && exec \"$@\"' sh \"$@\"");
    EXPECT_FALSE(install());
    EXPECT_EQ(alert.shown.back().message, "Driver Installation Error");
    EXPECT_NE(complaint().value_or("").find("Read-only file system"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(root));
}

} // namespace
