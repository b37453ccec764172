#include "driver_session/DriverScene.h"

#include "linux/process/LinuxDriverInstallation.h"
#include "session/Player.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using halvo::session::Player;
using halvo::session::PrivateSession;
using halvo::test::countingSamples;
using halvo::test::DriverScene;
using halvo::test::kVirtualSink;

constexpr std::size_t kLong = 48000 * 60;
constexpr const char* kDriver = "halvo-audio-dev";

void writeProgram(const fs::path& file, const std::string& body) {
    std::ofstream(file) << "#!/bin/sh\n" << body << "\n";
    fs::permissions(file, fs::perms::owner_all);
}

TEST(DriverInstallationTests, WhatWasCopiedServesTheSessionAndAnUpdateTakesItsPlace) {
    DriverScene scene;
    auto& session = scene.session();
    session.setEnvironmentOfThisProcess();
    const fs::path top = session.directory();
    const fs::path root = top / "root";
    const fs::path tools = top / "tools";
    fs::create_directories(tools);
    // A prompt that always succeeds, and no service manager for the sound server.
    writeProgram(tools / "pkexec", "PATH=" + tools.string() + ":$PATH exec \"$@\"");
    writeProgram(tools / "systemctl", "exit 1");
    if (::geteuid() != 0) writeProgram(tools / "chown", "exit 0");
    const char* before = std::getenv("PATH");
    const std::string path = before != nullptr ? before : "";
    ::setenv("PATH", (tools.string() + ":" + path).c_str(), 1);

    // As in the build: .../HalvoAudioDevice.driver/Contents/Linux/halvo-audio-device
    const fs::path bundle = fs::path(HALVO_AUDIO_DEVICE).parent_path().parent_path().parent_path();
    halvo::LinuxDriverInstallation installation(bundle.parent_path(), root);
    ASSERT_EQ(installation.bundledDriverURL(), bundle);
    const auto install = [&] {
        const auto result = installation.copyWithPrivileges(bundle);
        ASSERT_TRUE(result) << result.error();
        ASSERT_EQ(result->status, 0) << result->output;
        installation.takeUp();
    };
    const auto driver = [&] {
        const auto found = scene.processes(kDriver);
        return found.size() == 1 ? found.front() : 0;
    };
    install();
    ASSERT_TRUE(scene.isUp());
    const int first = driver();
    EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(first) + "/exe"),
              installation.installedPath() / "Contents/Linux/halvo-audio-device");
    installation.ensureRunning();
    EXPECT_EQ(driver(), first);

    const Player player(session.serverSocket(), countingSamples(kLong), 48000, kVirtualSink);
    ASSERT_TRUE(scene.soundArrives());
    install();
    EXPECT_TRUE(PrivateSession::waitFor([&] { return driver() > 0 && driver() != first; }));
    ASSERT_TRUE(scene.isUp());
    scene.ring().clear();
    EXPECT_TRUE(scene.soundArrives());
    EXPECT_EQ(scene.virtualSinks(), 1U);
    ::setenv("PATH", path.c_str(), 1);
}

} // namespace
