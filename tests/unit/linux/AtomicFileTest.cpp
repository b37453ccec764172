#include "posix/AtomicFile.h"

#include "unit/linux/TemporaryDirectory.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;
using halvo::AtomicFile;
using halvo::test::contents;
using halvo::test::inode;
using halvo::test::mode;
using halvo::test::put;
using halvo::test::TemporaryDirectory;
using halvo::test::WithoutPrivileges;

constexpr std::size_t kEnough = 1U << 20U;

TEST(AtomicFileTests, ReplacesAndIsPrivate) {
    const TemporaryDirectory directory;
    const auto path = directory / "file";
    const auto mask = ::umask(0);
    EXPECT_TRUE(AtomicFile::write(path, "first, and longer"));
    fs::permissions(path, fs::perms::all);
    EXPECT_TRUE(AtomicFile::write(path, std::string("new\0", 4)));
    ::umask(mask);
    EXPECT_EQ(contents(path), std::string("new\0", 4));
    EXPECT_EQ(mode(path), 0600U);
    EXPECT_EQ(directory.names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileTests, SymbolicLinksStay) {
    const TemporaryDirectory directory;
    fs::create_directory(directory / "folder");
    fs::create_symlink("folder/target", directory / "near");
    fs::create_symlink(directory / "near", directory / "far");
    for (const char* text : {"through a dangling link", "through one with a target"}) {
        EXPECT_TRUE(AtomicFile::write(directory / "far", text));
        EXPECT_TRUE(fs::is_symlink(directory / "far"));
        EXPECT_TRUE(fs::is_symlink(directory / "near"));
        EXPECT_EQ(contents(directory / "folder/target"), text);
        EXPECT_EQ(AtomicFile::read(directory / "far", kEnough), text);
    }
    fs::create_symlink("circle", directory / "circle");
    EXPECT_FALSE(AtomicFile::write(directory / "circle", "x"));
    EXPECT_EQ(AtomicFile::read(directory / "circle", kEnough), std::nullopt);
}

TEST(AtomicFileTests, ReadsAndReplacesNothingButFiles) {
    const TemporaryDirectory directory;
    fs::create_directory(directory / "folder");
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    put(directory / "long", "12345");
    for (const char* name : {"folder", "pipe", "missing", "long"}) {
        EXPECT_EQ(AtomicFile::read(directory / name, 4), std::nullopt) << name;
    }
    EXPECT_EQ(AtomicFile::read(directory / "long", 5), "12345");
    EXPECT_FALSE(AtomicFile::write(directory / "folder", "x"));
    EXPECT_TRUE(AtomicFile::write(directory / "pipe", "x")) << "its place is taken";
    EXPECT_FALSE(AtomicFile::write(directory / "missing/file", "x"));
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"folder", "long", "pipe"}));
}

TEST(AtomicFileTests, WritesInPlaceWhereTheFolderIsReadOnly) {
    const TemporaryDirectory directory;
    const WithoutPrivileges nobody;
    const auto folder = directory / "folder";
    const auto path = folder / "file";
    fs::create_directory(folder);
    put(path, "something longer");
    const auto before = inode(path);
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(AtomicFile::write(path, "short"));
    EXPECT_FALSE(AtomicFile::write(folder / "other", "x"));
    EXPECT_EQ(contents(path), "short");
    EXPECT_EQ(inode(path), before);
    fs::permissions(folder, fs::perms::owner_all);
}

/// A child writes one text after the other until it is killed in the middle of it.
TEST(AtomicFileTests, AKilledWriterLeavesOneOfTheTwoTexts) {
    const TemporaryDirectory directory;
    const auto path = directory / "file";
    const std::string one(300'000, 'a');
    const std::string other(500'000, 'b');
    ASSERT_TRUE(AtomicFile::write(path, one));
    for (int round = 0; round < 15; ++round) {
        std::array<int, 2> progress{};
        ASSERT_EQ(::pipe(progress.data()), 0);
        const auto child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) (void)::prctl(PR_SET_PDEATHSIG, SIGKILL); // none is left behind
        while (child == 0) {
            (void)AtomicFile::write(path, other);
            (void)AtomicFile::write(path, one);
            (void)!::write(progress[1], "", 1);
        }
        // Until the child is at work, then a little later each time.
        char step = 0;
        EXPECT_EQ(::read(progress[0], &step, 1), 1);
        for (int delay = 0; delay < round; ++delay)
            (void)AtomicFile::read(path, kEnough);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        for (const int end : progress)
            ::close(end);
        const auto left = AtomicFile::read(path, kEnough);
        ASSERT_TRUE(left == one || left == other)
            << "round " << round << ": " << (left ? left->size() : 0) << " bytes";
    }
}

} // namespace
