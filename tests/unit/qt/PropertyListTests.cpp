#include "platform/qt/PropertyList.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using halvo::propertyListString;

const std::string kHead = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
)";

std::string list(const std::string& entries) {
    return kHead + "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

const std::string kVersion = "<key>CFBundleVersion</key>";

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
        {"top is an array", kHead + "<plist><array><string>1</string></array></plist>",
         std::nullopt},
        {"not a property list", "<html><dict>" + kVersion + "<string>1</string></dict></html>",
         std::nullopt},
        {"cut off behind the value",
         kHead + "<plist><dict>" + kVersion + "<string>1</string></dict></pli", std::nullopt},
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
