#include "linux/files/JsonUserDefaults.h"

#include "fake/FakeServices.h"
#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

namespace {

namespace fs = std::filesystem;
using halvo::FakeSystemLog;
using halvo::JsonUserDefaults;
using halvo::test::contents;
using halvo::test::inode;
using halvo::test::mode;
using halvo::test::put;
using halvo::test::TemporaryDirectory;
using halvo::test::WithoutPrivileges;
using nlohmann::ordered_json;

class JsonUserDefaultsTests : public testing::Test {
  protected:
    JsonUserDefaults open() { return {path_, log_}; }

    TemporaryDirectory directory_;
    FakeSystemLog log_;
    fs::path folder_ = directory_ / "halvo";
    fs::path path_ = folder_ / "defaults.json";
};

TEST_F(JsonUserDefaultsTests, KeepsKindsAndValuesAcrossProcesses) {
    const std::string bytes("\0\xFF{\"", 4);
    const std::string text = "a \"quoted\" \xE2\x80\x94 text\n";
    {
        auto defaults = open();
        EXPECT_FALSE(fs::exists(folder_)) << "reading alone leaves no trace";
        defaults.setBool("bool", true);
        defaults.setFloat("float", 0.4F);
        defaults.setFloat("whole", 1.0F);
        defaults.setFloat("tiny", std::numeric_limits<float>::denorm_min());
        defaults.setDouble("double", 0.1);
        defaults.setString("string", text);
        defaults.setData("data", bytes);
        defaults.setString("gone", "x");
        defaults.remove("gone");
    }
    const auto defaults = open();
    EXPECT_TRUE(defaults.boolForKey("bool"));
    EXPECT_EQ(defaults.floatForKey("float"), 0.4F);
    EXPECT_EQ(defaults.floatForKey("tiny"), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(defaults.doubleForKey("double"), 0.1);
    EXPECT_EQ(defaults.stringForKey("string"), text);
    EXPECT_EQ(defaults.dataForKey("data"), bytes);
    EXPECT_FALSE(defaults.contains("gone"));

    const auto file = contents(path_);
    EXPECT_NE(file.find("\"float\": 0.4,"), std::string::npos) << file;
    EXPECT_NE(file.find("\"whole\": 1.0,"), std::string::npos) << file;
    EXPECT_TRUE(ordered_json::parse(file)["bool"].is_boolean());
    EXPECT_EQ(mode(path_), 0600U);
    EXPECT_EQ(mode(folder_), 0700U);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonUserDefaultsTests, ValuesOfAnotherKind) {
    fs::create_directory(folder_);
    put(path_,
        R"({"true": true, "zero": 0, "two": 2, "half": 0.5, "huge": 1e300, "text": "0.5 or so", "yes": "YES",
        "null": null, "list": [1], "bytes": {"data": "QQ=="}, "unpadded": {"data": "QQ"},
        "loose": {"data": "QR=="}, "spaced": {"data": "QQ ="}, "more": {"data": "QQ==", "x": 1}})");
    const auto defaults = open();
    struct Case {
        const char* key;
        bool present, flag;
        std::optional<double> number;
        std::optional<std::string> text, data;
    };
    const auto none = std::nullopt;
    for (const auto& [key, present, flag, number, text, data] : std::vector<Case>{
             {"missing", false, false, none, none, none},
             {"null", false, false, none, none, none},
             {"true", true, true, none, none, none},
             {"zero", true, false, 0, none, none},
             {"two", true, true, 2, none, none},
             {"half", true, true, 0.5, none, none},
             {"text", true, false, none, "0.5 or so", none},
             {"yes", true, true, none, "YES", none},
             {"list", true, false, none, none, none},
             {"bytes", true, false, none, none, "A"},
             {"unpadded", true, false, none, none, none},
             {"loose", true, false, none, none, none},
             {"spaced", true, false, none, none, none},
             {"more", true, false, none, none, none},
         }) {
        SCOPED_TRACE(key);
        EXPECT_EQ(defaults.contains(key), present);
        EXPECT_EQ(defaults.boolForKey(key), flag);
        EXPECT_EQ(defaults.doubleForKey(key), number);
        EXPECT_EQ(
            defaults.floatForKey(key),
            static_cast<float>(text ? halvo::numberOfText(*text) : number.value_or(flag ? 1 : 0)));
        EXPECT_EQ(defaults.stringForKey(key), text);
        EXPECT_EQ(defaults.dataForKey(key), data);
    }
    EXPECT_EQ(defaults.doubleForKey("huge"), 1e300);
    EXPECT_EQ(defaults.floatForKey("huge"), 0.0F) << "never infinite";
}

TEST_F(JsonUserDefaultsTests, LeavesEntriesItDoesNotKnowAsTheyAre) {
    fs::create_directory(folder_);
    const auto theirs = ordered_json::parse(
        R"({"z": 12345678901234567890, "later": {"list": [1, 2.5, null, "x"]}, "a": -1, "b": null})");
    put(path_, theirs.dump());
    auto defaults = open();
    defaults.setFloat("volume", 0.25F);
    defaults.remove("never there");
    auto expected = theirs;
    expected["volume"] = 0.25;
    EXPECT_EQ(ordered_json::parse(contents(path_)), expected) << "order included";
}

TEST_F(JsonUserDefaultsTests, NumbersThatAreNotFiniteChangeNothing) {
    auto defaults = open();
    defaults.setFloat("float", 0.5F);
    defaults.setDouble("double", 0.5);
    const auto before = contents(path_);
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        defaults.setFloat("float", static_cast<float>(value));
        defaults.setDouble("double", value);
    }
    EXPECT_EQ(defaults.floatForKey("float"), 0.5F);
    EXPECT_EQ(defaults.doubleForKey("double"), 0.5);
    EXPECT_EQ(contents(path_), before);
}

TEST_F(JsonUserDefaultsTests, TextThatIsNotUnicodeDoesNotSpoilTheFile) {
    auto defaults = open();
    defaults.setString("text", "caf\xE9");
    defaults.setBool("flag", true);
    EXPECT_TRUE(open().boolForKey("flag"));
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonUserDefaultsTests, SetsAsideWhatItCannotRead) {
    struct Case {
        const char* name;
        std::string contents;
    };
    for (const auto& [name, broken] : std::vector<Case>{
             {"empty", ""},
             {"cut off", "{\"a\": tru"},
             {"not an object", "[1, 2]"},
             {"null", "null"},
             {"rubbish behind", "{} {}"},
             {"a number beyond all bounds", "{\"a\": 1e400}"},
             {"not a number", "{\"a\": NaN}"},
             {"not Unicode", "{\"a\": \"\xFF\"}"},
             {"zeros", std::string(64, '\0')},
             {"very deep", "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}"},
         }) {
        SCOPED_TRACE(name);
        fs::remove_all(folder_);
        fs::create_directory(folder_);
        log_.lines.clear();
        put(path_, broken);
        auto defaults = open();
        EXPECT_FALSE(defaults.contains("a"));
        ASSERT_EQ(log_.lines.size(), 1U);
        const auto at = log_.lines.front().find(path_.string() + ".unreadable-");
        ASSERT_NE(at, std::string::npos) << log_.lines.front();
        EXPECT_EQ(contents(log_.lines.front().substr(at)), broken);
        defaults.setBool("b", true);
        EXPECT_TRUE(open().boolForKey("b"));
    }
}

TEST_F(JsonUserDefaultsTests, SetsAsideWhatIsNoFileAndNeverTwiceUnderOneName) {
    for (int i = 0; i < 3; ++i) {
        fs::create_directories(path_);
        (void)open();
        ASSERT_FALSE(fs::exists(path_));
        ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
        (void)open();
        ASSERT_FALSE(fs::exists(path_));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 6);
}

TEST_F(JsonUserDefaultsTests, BehindALinkTheTargetIsSetAsideAndTheLinkStays) {
    fs::create_directory(folder_);
    fs::create_directory(directory_ / "dotfiles");
    const auto target = directory_ / "dotfiles/target.json";
    put(target, "broken");
    fs::create_symlink(target, path_);
    open().setBool("a", true);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_TRUE(JsonUserDefaults::readOnly(target).boolForKey("a"));
    EXPECT_EQ(std::distance(fs::directory_iterator(target.parent_path()), fs::directory_iterator()),
              2);
}

TEST_F(JsonUserDefaultsTests, NeverWritesOverWhatItCouldNotSetAside) {
    const WithoutPrivileges nobody;
    fs::create_directory(folder_);
    put(path_, "a person's broken but precious file");
    fs::permissions(folder_, fs::perms::owner_read | fs::perms::owner_exec);
    auto defaults = open();
    defaults.setBool("a", true);
    fs::permissions(folder_, fs::perms::owner_all);
    defaults.setBool("b", true);
    EXPECT_TRUE(defaults.boolForKey("a")) << "kept in memory";
    EXPECT_EQ(contents(path_), "a person's broken but precious file");
    EXPECT_EQ(log_.lines.size(), 1U);
}

TEST_F(JsonUserDefaultsTests, AFailedWriteKeepsTheValueAndTheNextOneSavesBoth) {
    const WithoutPrivileges nobody;
    fs::create_directory(folder_);
    fs::permissions(folder_, fs::perms::owner_read | fs::perms::owner_exec);
    auto defaults = open();
    defaults.setBool("a", true);
    EXPECT_TRUE(defaults.boolForKey("a"));
    fs::permissions(folder_, fs::perms::owner_all);
    EXPECT_FALSE(fs::exists(path_));
    defaults.setBool("b", true);
    const auto saved = open();
    EXPECT_TRUE(saved.boolForKey("a") && saved.boolForKey("b"));
}

TEST_F(JsonUserDefaultsTests, TheReadOnlyViewSeesWhatIsSavedAndTouchesNothing) {
    auto defaults = open();
    defaults.setString("uid", "speakers");
    auto view = JsonUserDefaults::readOnly(path_);
    defaults.setString("uid", "headphones");
    EXPECT_EQ(view.stringForKey("uid"), "speakers");
    const auto before = contents(path_);
    view.setString("uid", "other");
    view.remove("uid");
    EXPECT_EQ(contents(path_), before);

    put(path_, "broken");
    EXPECT_FALSE(JsonUserDefaults::readOnly(path_).contains("uid"));
    EXPECT_FALSE(JsonUserDefaults::readOnly(directory_ / "missing").contains("uid"));
    EXPECT_EQ(contents(path_), "broken");
}

} // namespace
