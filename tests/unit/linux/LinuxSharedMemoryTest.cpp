#include "linux/process/LinuxSharedMemory.h"

#include "platform/RingLayout.h"
#include "unit/posix/SharedObject.h"
#include "unit/qt/QtTestLoop.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <sys/mman.h>

namespace {

using halvo::LinuxSharedMemory;
using halvo::Subscription;
using halvo::test::SharedObject;

constexpr std::int64_t kMemoryPage = 4096;

class LinuxSharedMemoryTests : public testing::Test {
  protected:
    /// The events that the system has queued so far reach their watchers.
    static void turn() { QCoreApplication::processEvents(); }

    QCoreApplication& application_ = halvo::test::application();
    std::optional<LinuxSharedMemory> memory_{std::in_place};
};

TEST_F(LinuxSharedMemoryTests, MapsForBothSides) {
    const SharedObject object(kMemoryPage);
    const auto descriptor = memory_->open(object.name().c_str());
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(memory_->size(descriptor), kMemoryPage);
    auto* ours = static_cast<char*>(memory_->map(descriptor, kMemoryPage));
    ASSERT_NE(ours, nullptr);
    auto* theirs = static_cast<char*>(object.map(kMemoryPage));
    std::strcpy(theirs, "from the driver");
    EXPECT_STREQ(ours, "from the driver");
    std::strcpy(ours, "from the reader");
    EXPECT_STREQ(theirs, "from the reader");
    memory_->unmap(ours, kMemoryPage);
    memory_->close(descriptor);
    EXPECT_EQ(memory_->size(descriptor), -1) << "closed";

    EXPECT_LT(memory_->open("/halvo_test_that_is_not_there"), 0);
    EXPECT_EQ(memory_->map(object.descriptor(), 0), nullptr);
    EXPECT_EQ(memory_->map(-1, kMemoryPage), nullptr);
}

TEST_F(LinuxSharedMemoryTests, TheRingGoesByTheNameInTheEnvironment) {
    const SharedObject object(kMemoryPage);
    const char* value = std::getenv("HALVO_RING_NAME");
    const std::string before = value != nullptr ? value : "";
    ::setenv("HALVO_RING_NAME", object.name().c_str(), 1);
    int changes = 0;
    const auto watching = memory_->watch(halvo::kRingName, [&changes] { ++changes; });
    const auto descriptor = memory_->open(halvo::kRingName);
    EXPECT_EQ(memory_->size(descriptor), kMemoryPage);
    EXPECT_TRUE(object.resize(2 * kMemoryPage));
    turn();
    EXPECT_EQ(changes, 1);
    memory_->close(descriptor);
    ::unsetenv("HALVO_RING_NAME");
    if (!before.empty()) ::setenv("HALVO_RING_NAME", before.c_str(), 1);
}

TEST_F(LinuxSharedMemoryTests, IsCurrentUntilTheObjectIsReplacedResizedOrLost) {
    enum class Change { none, removed, replaced, grown, shrunk, shrunkAndRegrown };
    struct Case {
        const char* name;
        Change change;
        bool current;
    };
    for (const auto& [name, change, current] : {
             Case{"nothing happened", Change::none, true},
             Case{"removed", Change::removed, false},
             Case{"another object of that name", Change::replaced, false},
             Case{"grown", Change::grown, false},
             Case{"shrunk", Change::shrunk, false},
             Case{"shrunk, met, and grown again", Change::shrunkAndRegrown, false},
         }) {
        SCOPED_TRACE(name);
        const SharedObject object(2 * kMemoryPage);
        const char* key = object.name().c_str();
        const auto descriptor = memory_->open(key);
        auto* mapping = static_cast<volatile char*>(memory_->map(descriptor, 2 * kMemoryPage));
        ASSERT_NE(mapping, nullptr);
        if (change == Change::removed || change == Change::replaced) ::shm_unlink(key);
        if (change == Change::replaced) {
            const int other = ::shm_open(key, O_RDWR | O_CREAT | O_EXCL, 0600);
            EXPECT_EQ(::ftruncate(other, 2 * kMemoryPage), 0);
            ::close(other);
        }
        if (change == Change::grown) (void)object.resize(3 * kMemoryPage);
        if (change == Change::shrunk) (void)object.resize(kMemoryPage);
        if (change == Change::shrunkAndRegrown) {
            EXPECT_TRUE(object.resize(kMemoryPage));
            EXPECT_EQ(mapping[kMemoryPage], 0) << "reads as zero instead of ending the process";
            EXPECT_TRUE(object.resize(2 * kMemoryPage));
        }
        auto* start = const_cast<char*>(mapping);
        EXPECT_EQ(memory_->isCurrent(key, descriptor, start, 2 * kMemoryPage), current);
        memory_->unmap(start, 2 * kMemoryPage);
        memory_->close(descriptor);
    }
}

TEST_F(LinuxSharedMemoryTests, TellsOncePerTurnOfWhatHappensToItsOwnObject) {
    const SharedObject object;
    const char* name = object.name().c_str();
    int changes = 0;
    auto watching = memory_->watch(name, [&changes] { ++changes; });
    const auto expectOneMore = [&](const char* what) {
        const int before = changes;
        EXPECT_GE(before, 0);
        turn();
        EXPECT_EQ(changes, before + 1) << what;
        turn();
        EXPECT_EQ(changes, before + 1) << what << ", once";
    };
    const int descriptor = ::shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600);
    EXPECT_EQ(changes, 0) << "before the loop has turned";
    expectOneMore("appears");
    EXPECT_EQ(::ftruncate(descriptor, kMemoryPage), 0);
    expectOneMore("is resized");
    EXPECT_EQ(::futimens(descriptor, nullptr), 0);
    expectOneMore("is marked by its owner");
    const std::string path = std::string("/dev/shm") + name;
    EXPECT_EQ(std::rename(path.c_str(), (path + ".away").c_str()), 0);
    expectOneMore("is renamed");
    EXPECT_EQ(std::rename((path + ".away").c_str(), path.c_str()), 0);
    expectOneMore("comes back");
    ::shm_unlink(name);
    expectOneMore("goes");
    ::close(::shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600));
    ::shm_unlink(name);
    expectOneMore("comes and goes");

    const SharedObject other(kMemoryPage);
    const int before = changes;
    turn();
    EXPECT_EQ(changes, before) << "of another object";
    ::close(descriptor);
}

TEST_F(LinuxSharedMemoryTests, WatchersComeAndGoWhileTheyAreTold) {
    const SharedObject object(kMemoryPage);
    const char* name = object.name().c_str();
    std::vector<std::string> calls;
    Subscription second;
    Subscription third;
    const auto first = memory_->watch(name, [&] {
        calls.emplace_back("first");
        second.cancel();
        if (calls.size() == 1) third = memory_->watch(name, [&] { calls.emplace_back("third"); });
    });
    second = memory_->watch(name, [&] { calls.emplace_back("second"); });
    EXPECT_TRUE(object.resize(2 * kMemoryPage));
    turn();
    EXPECT_EQ(calls, std::vector<std::string>{"first"});
    EXPECT_TRUE(object.resize(kMemoryPage));
    turn();
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "first", "third"}));
    memory_.reset(); // the subscriptions outlive it
}

} // namespace
