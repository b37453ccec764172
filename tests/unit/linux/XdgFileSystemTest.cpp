#include "linux/files/XdgFileSystem.h"

#include "unit/linux/TemporaryDirectory.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using halvo::XdgFileSystem;
using halvo::test::contents;
using halvo::test::mode;
using halvo::test::put;
using halvo::test::TemporaryDirectory;
using halvo::test::WithoutPrivileges;

/// One environment variable, changed for a while.
class Variable {
  public:
    Variable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* text = std::getenv(name)) before_ = text;
        apply(value);
    }
    ~Variable() { apply(before_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    void apply(const std::optional<std::string>& value) const {
        if (value) ::setenv(name_, value->c_str(), 1);
        if (!value) ::unsetenv(name_);
    }
    const char* name_;
    std::optional<std::string> before_;
};

TEST(XdgFileSystemTests, FollowsTheEnvironment) {
    XdgFileSystem files;
    const Variable home("HOME", "/home/somebody");
    for (const auto& [data, expected] :
         {std::pair<std::optional<std::string>, fs::path>{"/data", "/data"},
          {std::nullopt, "/home/somebody/.local/share"},
          {"", "/home/somebody/.local/share"},
          {"relative/path", "/home/somebody/.local/share"}}) {
        const Variable variable("XDG_DATA_HOME", data);
        EXPECT_EQ(files.applicationSupportDirectory(), expected);
    }
    for (const auto& [temporary, expected] :
         {std::pair<std::optional<std::string>, fs::path>{"/elsewhere", "/elsewhere"},
          {std::nullopt, "/tmp"}}) {
        const Variable variable("TMPDIR", temporary);
        EXPECT_EQ(files.temporaryDirectory(), expected);
    }
}

TEST(XdgFileSystemTests, AppendsToTheUsersOwnPlainFileOnly) {
    const TemporaryDirectory directory;
    XdgFileSystem files;
    const auto path = directory / "log";
    EXPECT_TRUE(files.append(path, "one\n"));
    EXPECT_TRUE(files.append(path, "two\n"));
    EXPECT_EQ(contents(path), "one\ntwo\n");
    EXPECT_EQ(mode(path), 0600U);

    fs::create_symlink(path, directory / "link");
    fs::create_symlink(directory / "new", directory / "dangling");
    fs::create_directory(directory / "folder");
    put(directory / "mine", "mine");
    fs::create_hard_link(directory / "mine", directory / "second name");
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0666), 0);
    for (const char* name : {"link", "dangling", "folder", "second name", "pipe", "none/file"}) {
        EXPECT_FALSE(files.append(directory / name, "x")) << name;
    }
    EXPECT_EQ(contents(path), "one\ntwo\n");
    EXPECT_EQ(contents(directory / "mine"), "mine");
    EXPECT_FALSE(fs::exists(directory / "new"));

    if (::geteuid() != 0) GTEST_SKIP() << "the rest needs another user's file";
    fs::permissions(path, fs::perms::all);
    const WithoutPrivileges nobody;
    EXPECT_FALSE(files.append(path, "x")) << "another user's";
}

TEST(XdgFileSystemTests, CreatesFoldersAndSaysWhetherTheyAreThere) {
    const TemporaryDirectory directory;
    XdgFileSystem files;
    EXPECT_TRUE(files.createDirectory(directory / "a/b/c"));
    EXPECT_TRUE(files.createDirectory(directory / "a/b/c"));
    put(directory / "file", "");
    EXPECT_FALSE(files.createDirectory(directory / "file"));
    EXPECT_FALSE(files.createDirectory(directory / "file/below"));
    EXPECT_TRUE(files.exists(directory / "file"));
    EXPECT_TRUE(files.setAside(directory / "file"));
    EXPECT_FALSE(files.setAside(directory / "file"));
    EXPECT_FALSE(files.exists(directory / "file"));
}

} // namespace
