#include "linux/process/LinuxDriverInstallation.h"

#include "unit/linux/TemporaryDirectory.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using halvo::LinuxDriverInstallation;
using halvo::test::put;
using halvo::test::TemporaryDirectory;

TEST(LinuxDriverInstallationTests, TheEnvironmentNamesAnotherBundle) {
    LinuxDriverInstallation driver("/usr/bin");
    ::setenv("HALVO_DRIVER_BUNDLE", "/build/HalvoAudioDevice.driver", 1);
    EXPECT_EQ(driver.installedPath(), "/build/HalvoAudioDevice.driver");
    for (const bool empty : {true, false}) {
        if (empty) ::setenv("HALVO_DRIVER_BUNDLE", "", 1);
        if (!empty) ::unsetenv("HALVO_DRIVER_BUNDLE");
        EXPECT_EQ(driver.installedPath(), "/usr/lib/halvo/HalvoAudioDevice.driver");
    }
}

TEST(LinuxDriverInstallationTests, FindsItsOwnCopyBesideTheProgram) {
    const TemporaryDirectory prefix;
    LinuxDriverInstallation driver(prefix / "bin");
    EXPECT_EQ(driver.bundledDriverURL(), std::nullopt);
    fs::create_directories(prefix / "bin/HalvoAudioDevice.driver");
    EXPECT_EQ(driver.bundledDriverURL(), prefix / "bin/HalvoAudioDevice.driver");
    fs::create_directories(prefix / "lib/halvo/HalvoAudioDevice.driver");
    EXPECT_EQ(driver.bundledDriverURL(), prefix / "lib/halvo/HalvoAudioDevice.driver");
}

TEST(LinuxDriverInstallationTests, ReadsTheBundlesListAndSurvivesWhatIsNone) {
    const TemporaryDirectory directory;
    LinuxDriverInstallation driver(directory.path());
    const auto bundle = directory / "a.driver";
    const auto list = bundle / "Contents/Info.plist";
    const auto version = [&] { return driver.propertyListString(bundle, "CFBundleVersion"); };
    EXPECT_EQ(version(), std::nullopt);
    fs::create_directories(list);
    EXPECT_EQ(version(), std::nullopt) << "a folder";
    fs::remove(list);
    ASSERT_EQ(::mkfifo(list.c_str(), 0600), 0);
    EXPECT_EQ(version(), std::nullopt) << "a pipe";
    fs::remove(list);
    put(list, "<plist><dict><key>CFBundleVersion</key><string>1.9</string></dict></plist>");
    EXPECT_EQ(version(), "1.9");
}

} // namespace
