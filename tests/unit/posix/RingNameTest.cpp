#include "posix/RingName.h"

#include "platform/RingLayout.h"
#include "unit/posix/SharedObject.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>

namespace {

using halvo::test::SharedObject;

/// Sets the variable for a test and restores the earlier value.
class RingVariable {
  public:
    explicit RingVariable(const std::optional<std::string>& value) {
        if (const char* text = std::getenv("HALVO_RING_NAME")) before_ = text;
        apply(value);
    }
    ~RingVariable() { apply(before_); }
    RingVariable(const RingVariable&) = delete;
    RingVariable& operator=(const RingVariable&) = delete;

  private:
    static void apply(const std::optional<std::string>& value) {
        if (value) ::setenv("HALVO_RING_NAME", value->c_str(), 1);
        if (!value) ::unsetenv("HALVO_RING_NAME");
    }
    std::optional<std::string> before_;
};

TEST(RingNameTests, TakesOnlyValidNamesFromTheEnvironment) {
    const std::string longest = "/" + std::string(249, 'x');
    for (const std::string& valid : {std::string("/a"), longest, std::string("/halvo ring")}) {
        const RingVariable variable(valid);
        EXPECT_EQ(halvo::ringName(), valid);
    }
    const std::string standard = [] {
        const RingVariable variable(std::nullopt);
        return halvo::ringName();
    }();
    EXPECT_TRUE(standard.starts_with(halvo::kRingName));
    for (const std::string& invalid : {std::string(), std::string("/"), std::string("ring"),
                                       std::string("/a/b"), std::string("/../x"), longest + "x"}) {
        const RingVariable variable(invalid);
        EXPECT_EQ(halvo::ringName(), standard) << '"' << invalid << '"';
    }
}

TEST(RingNameTests, SuffixOnlyWhereTheObjectIsSomebodyElses) {
    const SharedObject absent;
    EXPECT_EQ(halvo::ownedRingName(absent.name()), absent.name());
    const SharedObject object(100);
    EXPECT_EQ(halvo::ownedRingName(object.name()), object.name());
    if (::fchown(object.descriptor(), 65534, 65534) != 0) GTEST_SKIP() << "needs root";
    EXPECT_EQ(halvo::ownedRingName(object.name()),
              object.name() + "_" + std::to_string(::geteuid()));
}

} // namespace
