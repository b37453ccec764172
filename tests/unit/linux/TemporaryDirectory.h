#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace halvo::test {

/// A private directory with access for all users; removed with its contents.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "halvo-test-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
        std::filesystem::permissions(path_, std::filesystem::perms::all);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

    /// The names inside, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            result.push_back(entry.path().filename().string());
        }
        std::ranges::sort(result);
        return result;
    }

  private:
    std::filesystem::path path_;
};

/// Drops root's rights, so that file modes apply.
class WithoutPrivileges {
  public:
    WithoutPrivileges() {
        if (before_ == 0) (void)::seteuid(kNobody);
    }
    ~WithoutPrivileges() {
        if (before_ == 0) (void)::seteuid(before_);
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    uid_t before_ = ::geteuid();
};

inline std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void put(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

inline unsigned mode(const std::filesystem::path& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

inline ino_t inode(const std::filesystem::path& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

} // namespace halvo::test
