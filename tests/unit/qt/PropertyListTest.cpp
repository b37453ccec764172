#include "qt/PropertyList.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using halvo::propertyListString;

const std::string kListHead = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
)";

std::string list(const std::string& entries) {
    return kListHead + "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

const std::string kVersion = "<key>CFBundleVersion</key>";

/// Bytes from two hexadecimal digits each.
std::string bytes(const std::string& digits) {
    std::string result;
    for (std::size_t at = 0; at < digits.size(); at += 2)
        result += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    return result;
}

/// A binary list as another program wrote it; `objects` is what lies behind the magic.
std::string binary(const std::string& objects) {
    return "bplist00" + bytes(objects);
}

const std::string kBinaryKey = "5f100f434642756e646c6556657273696f6e"; // CFBundleVersion

/// The table of an object list: where it begins, and how many objects there are.
std::string trailer(const std::string& count, const std::string& start) {
    return "0000000000000101" + std::string("00000000000000") + count + "0000000000000000" +
           "00000000000000" + start;
}

TEST(PropertyListTests, ReadsBinaryLists) {
    const struct {
        const char* name;
        std::string list;
        std::optional<std::string> expected;
    } rows[] = {
        {"after another key",
         binary("d2010203045141" + kBinaryKey + "517854312e3130080d0f2123" + trailer("05", "28")),
         "1.10"},
        {"UTF-16", binary("d10102" + kBinaryKey + "6200e40031080b1d" + trailer("03", "22")),
         "\xC3\xA4"
         "1"},
        {"an integer", binary("d10102" + kBinaryKey + "1003080b1d" + trailer("03", "1f")),
         std::nullopt},
        {"nested", binary("d101025141d10304" + kBinaryKey + "5139080b0d1022" + trailer("05", "24")),
         std::nullopt},
        {"an array", binary("a20102" + kBinaryKey + "5131080b1d" + trailer("03", "1f")),
         std::nullopt},
    };
    for (const auto& [name, list, expected] : rows)
        EXPECT_EQ(propertyListString(list, "CFBundleVersion"), expected) << name;
}

TEST(PropertyListTests, ABrokenBinaryListDoesNoHarm) {
    const auto whole = binary("d10102" + kBinaryKey + "5131080b1d" + trailer("03", "1f"));
    ASSERT_EQ(propertyListString(whole, "CFBundleVersion"), "1");
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(propertyListString(whole.substr(0, length), "CFBundleVersion"), std::nullopt)
            << length;
    for (std::size_t at = 8; at < whole.size(); ++at) {
        auto list = whole;
        list[at] = static_cast<char>(~list[at]);
        (void)propertyListString(list, "CFBundleVersion"); // any answer, but an answer
    }
}

TEST(PropertyListTests, FindsTextAtTheTopLevelOnly) {
    struct Case {
        const char* name;
        std::string text;
        std::optional<std::string> expected;
    };
    const std::vector<Case> cases{
        {"plain", list(kVersion + "<string>1.10</string>"), "1.10"},
        {"after other kinds",
         list("<key>A</key><true/><key>B</key><array><string>x</string></array>"
              "<key>C</key><dict>" +
              kVersion + "<string>9</string></dict>\n  " + kVersion + "\n  <string>2</string>"),
         "2"},
        {"only in a nested dictionary",
         list("<key>A</key><dict>" + kVersion + "<string>9</string></dict>"), std::nullopt},
        {"escapes and comments", list(kVersion + "<!-- now --><string>1 &lt; &#228;</string>"),
         "1 < \xC3\xA4"},
        {"empty text", list(kVersion + "<string/>"), ""},
        {"another kind", list(kVersion + "<integer>3</integer>"), std::nullopt},
        {"another kind, then another key's text",
         list(kVersion + "<integer>3</integer><key>A</key><string>x</string>"), std::nullopt},
        {"no such key", list("<key>A</key><string>x</string>"), std::nullopt},
        {"top is an array", kListHead + "<plist><array><string>1</string></array></plist>",
         std::nullopt},
        {"not a property list", "<html><dict>" + kVersion + "<string>1</string></dict></html>",
         std::nullopt},
        {"cut off behind the value",
         kListHead + "<plist><dict>" + kVersion + "<string>1</string></dict></pli", std::nullopt},
        {"rubbish at the end", list(kVersion + "<string>1</string>") + "<more>", std::nullopt},
        {"empty", "", std::nullopt},
        {"binary", std::string("bplist00\xD1\x01\x02", 11), std::nullopt},
        {"entities that multiply",
         "<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\">"
         "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
         "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
         "<plist><dict>" +
             kVersion + "<string>&c;&c;&c;</string></dict></plist>",
         std::nullopt},
    };
    for (const auto& [name, text, expected] : cases) {
        EXPECT_EQ(propertyListString(text, "CFBundleVersion"), expected) << name;
    }
}

} // namespace
