#include "posix/MappingGuard.h"

#include "unit/posix/SharedObject.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using halvo::MappingGuard;
using halvo::test::SharedObject;

constexpr std::size_t kPage = 4096;

/// A mapping of a shared object's first pages that goes with the test.
struct Mapping {
    explicit Mapping(const SharedObject& object, std::size_t mappedSize)
        : size(mappedSize), bytes(static_cast<volatile char*>(object.map(mappedSize))) {}
    ~Mapping() { ::munmap(const_cast<char*>(bytes), size); }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    const void* start() const { return const_cast<const char*>(bytes); }

    std::size_t size;
    volatile char* bytes;
};

TEST(MappingGuardTests, ShrunkObjectReadsAsZerosAndIsLost) {
    const SharedObject object(4 * kPage);
    const Mapping mapping(object, 4 * kPage - 100);
    ASSERT_TRUE(MappingGuard::add(mapping.start(), mapping.size));
    mapping.bytes[0] = 7;
    ASSERT_TRUE(object.resize(kPage));
    EXPECT_EQ(mapping.bytes[0], 7) << "what is still there stays";
    EXPECT_FALSE(MappingGuard::isLost(mapping.start()));

    EXPECT_EQ(mapping.bytes[3 * kPage], 0);
    EXPECT_TRUE(MappingGuard::isLost(mapping.start()));
    EXPECT_EQ(mapping.bytes[0], 0) << "one object or none: never half of it";
    mapping.bytes[2 * kPage] = 9;
    EXPECT_EQ(mapping.bytes[2 * kPage], 9);
    MappingGuard::remove(mapping.start());
}

TEST(MappingGuardTests, WritesSurviveTooAndOtherRangesStay) {
    const SharedObject kept(2 * kPage);
    const SharedObject shrunk(2 * kPage);
    const Mapping keptMapping(kept, 2 * kPage);
    const Mapping shrunkMapping(shrunk, 2 * kPage);
    ASSERT_TRUE(MappingGuard::add(keptMapping.start(), keptMapping.size));
    ASSERT_TRUE(MappingGuard::add(shrunkMapping.start(), shrunkMapping.size));
    keptMapping.bytes[0] = 5;
    ASSERT_TRUE(shrunk.resize(0));
    shrunkMapping.bytes[kPage] = 1;
    EXPECT_TRUE(MappingGuard::isLost(shrunkMapping.start()));
    EXPECT_FALSE(MappingGuard::isLost(keptMapping.start()));
    EXPECT_EQ(keptMapping.bytes[0], 5);
    MappingGuard::remove(keptMapping.start());
    MappingGuard::remove(shrunkMapping.start());
    EXPECT_FALSE(MappingGuard::isLost(shrunkMapping.start())) << "a range is forgotten whole";
}

TEST(MappingGuardTests, TableTakesBackWhatIsRemoved) {
    const SharedObject object(kPage);
    const Mapping mapping(object, kPage);
    for (int round = 0; round < 1000; ++round) {
        ASSERT_TRUE(MappingGuard::add(mapping.start(), mapping.size)) << "round " << round;
        MappingGuard::remove(mapping.start());
    }
}

void readBeyond(const SharedObject& object) {
    const Mapping guarded(object, kPage);
    (void)MappingGuard::add(guarded.start(), guarded.size);
    const SharedObject other(0);
    other.unlink();
    const Mapping unguarded(other, kPage);
    (void)unguarded.bytes[0];
}

void readAfterRemoval(const SharedObject& object) {
    const Mapping mapping(object, kPage);
    (void)MappingGuard::add(mapping.start(), mapping.size);
    MappingGuard::remove(mapping.start());
    (void)object.resize(0);
    (void)mapping.bytes[0];
}

void sendSignal(const SharedObject& object) {
    const Mapping mapping(object, kPage);
    (void)MappingGuard::add(mapping.start(), mapping.size);
    ::kill(::getpid(), SIGBUS);
}

/// Killed by the signal; AddressSanitizer, where it is built in, reports it and exits instead.
bool diedOfBusError(int status) {
#if defined(__SANITIZE_ADDRESS__)
    return WIFSIGNALED(status) || WEXITSTATUS(status) != 0;
#else
    return testing::KilledBySignal(SIGBUS)(status);
#endif
}

TEST(MappingGuardDeathTests, OtherBusErrorsStillKill) {
    const SharedObject object(kPage);
    object.unlink();
    EXPECT_EXIT(readBeyond(object), diedOfBusError, "");
    EXPECT_EXIT(readAfterRemoval(object), diedOfBusError, "");
    EXPECT_EXIT(sendSignal(object), diedOfBusError, "");
}

TEST(MappingGuardDeathTests, AnEarlierHandlerIsStillAsked) {
    const auto scene = [] {
        (void)std::signal(SIGBUS, [](int) { _exit(42); });
        const SharedObject object(kPage);
        object.unlink();
        readBeyond(object);
    };
    // In a fresh process: the handler is installed once, and only over what was there before.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(scene(), testing::ExitedWithCode(42), "");
}

} // namespace
