#include "fake/FakeServices.h"
#include "fake/FakeUserDefaults.h"
#include "linux/files/XdgFileSystem.h"
#include "presets/PresetCoding.h"
#include "presets/PresetManager.h"
#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace halvo;
using test::put;

namespace {

constexpr const char* kPrecious = "what somebody made";
constexpr auto kReadOnlyFolder =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec;

/// The list of presets in a real folder of its own.
class PresetsOnDisk : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "halvo-presets-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        ::setenv("XDG_DATA_HOME", folder.c_str(), 1);
    }
    void TearDown() override {
        std::filesystem::remove_all(folder);
        ::unsetenv("XDG_DATA_HOME");
    }
    std::filesystem::path file() const { return folder / "Halvo" / "presets.json"; }
    std::string contents() const { return test::contents(file()); }
    /// What the file beside `path` that was set aside holds.
    static std::string keptBeside(const std::filesystem::path& path) {
        for (const auto& entry : std::filesystem::directory_iterator(path.parent_path())) {
            if (entry.path().string().starts_with(path.string() + ".unreadable-"))
                return test::contents(entry.path());
        }
        return "nothing";
    }
    /// A list long enough that a save takes a while.
    static void fill(PresetManager& manager) {
        auto list = manager.presets.get();
        for (int n = 0; n < 400; ++n)
            list.push_back(list[static_cast<std::size_t>(n % 23)]);
        manager.presets.set(list);
    }

    std::filesystem::path folder;
    XdgFileSystem files;
    FakeUserDefaults defaults;
    FakeSystemLog log;
};

} // namespace

TEST_F(PresetsOnDisk, AProcessKilledWhileItSavesNeverLosesTheList) {
    for (int round = 0; round < 40; ++round) {
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PresetManager manager(files, defaults, log);
            fill(manager);
            manager.createCustomPreset("x");
            (void)!::write(ready[1], "r", 1);
            for (;;)
                manager.renamePreset(manager.presets.get().back(), "a new name");
        }
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        // Somewhere inside one of its saves.
        for (volatile int spin = 0; spin < round * 20'000;)
            spin = spin + 1;
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        ::close(ready[0]);
        ::close(ready[1]);
        const auto presets = decodePresets(contents());
        ASSERT_TRUE(presets) << "round " << round;
        EXPECT_GE(presets->size(), 424U);
        std::filesystem::remove(file());
    }
}

TEST_F(PresetsOnDisk, AFullDiskKeepsTheOldList) {
    PresetManager manager(files, defaults, log);
    const auto before = contents();
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000}; // no file grows beyond this
        ::setrlimit(RLIMIT_FSIZE, &limit);
        manager.createCustomPreset("lost");
        ::_exit(manager.presets.get().size() == 24 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the list in memory still works";
    EXPECT_EQ(contents(), before);
}

TEST_F(PresetsOnDisk, AnUnreadableFileIsKeptBesideTheNewOne) {
    std::filesystem::create_directories(file().parent_path());
    put(file(), kPrecious);
    const PresetManager manager(files, defaults, log);
    EXPECT_TRUE(decodePresets(contents()));
    EXPECT_EQ(keptBeside(file()), kPrecious);
}

TEST_F(PresetsOnDisk, BehindALinkTheTargetIsSetAsideAndTheLinkStays) {
    std::filesystem::create_directories(file().parent_path());
    std::filesystem::create_directory(folder / "dotfiles");
    const auto target = folder / "dotfiles/presets.json";
    put(target, kPrecious);
    std::filesystem::create_symlink("../dotfiles/presets.json", file());
    PresetManager manager(files, defaults, log);
    manager.createCustomPreset("Mine");
    EXPECT_EQ(std::filesystem::read_symlink(file()), "../dotfiles/presets.json");
    EXPECT_EQ(decodePresets(test::contents(target)), manager.presets.get());
    EXPECT_EQ(keptBeside(target), kPrecious);
}

TEST_F(PresetsOnDisk, NothingIsWrittenOverWhatCannotBeSetAside) {
    const test::WithoutPrivileges nobody;
    const test::TemporaryDirectory own;
    ::setenv("XDG_DATA_HOME", own.path().c_str(), 1);
    const auto support = own / "Halvo";
    const auto dotfiles = own / "dotfiles";
    for (const bool isLinked : {false, true}) {
        SCOPED_TRACE(isLinked ? "behind a link" : "in its place");
        std::filesystem::create_directory(support);
        std::filesystem::create_directory(dotfiles);
        const auto target = (isLinked ? dotfiles : support) / "presets.json";
        put(target, kPrecious);
        if (isLinked) std::filesystem::create_symlink(target, support / "presets.json");
        std::filesystem::permissions(target.parent_path(), kReadOnlyFolder);
        PresetManager manager(files, defaults, log);
        manager.createCustomPreset("Mine");
        std::filesystem::permissions(target.parent_path(), std::filesystem::perms::owner_all);
        manager.createCustomPreset("Mine too");
        EXPECT_EQ(manager.presets.get().size(), 25U) << "in memory the list goes on";
        EXPECT_EQ(test::contents(target), kPrecious);
        EXPECT_EQ(std::filesystem::is_symlink(support / "presets.json"), isLinked);
        std::filesystem::remove_all(support);
        std::filesystem::remove_all(dotfiles);
    }
}

TEST_F(PresetsOnDisk, ALinkToAFolderLeavesTheFolderWhereItIs) {
    std::filesystem::create_directories(file().parent_path());
    std::filesystem::create_directory(folder / "music");
    std::filesystem::create_symlink(folder / "music", file());
    PresetManager manager(files, defaults, log);
    manager.createCustomPreset("Mine");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "music"));
    EXPECT_TRUE(std::filesystem::is_symlink(file()));
}
