#include "driver/RingWriter.h"
#include "platform/RingLayout.h"
#include "unit/posix/SharedObject.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <optional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <vector>

namespace {

using halvo::loadShared;
using halvo::RingHeader;
using halvo::driver::RingWriter;
using halvo::test::SharedObject;

/// What a header says about its ring.
struct Shape {
    std::uint32_t sampleRate;
    std::uint32_t channelCount;
    std::uint32_t capacity;
    bool operator==(const Shape&) const = default;
};

Shape shapeOf(const RingHeader& header) {
    return {loadShared(header.sampleRate), loadShared(header.channelCount),
            loadShared(header.capacity)};
}

/// Runs `publish` in a child, one machine instruction at a time, and returns what another process
/// sees in between, repetitions left out. Nothing where a process may not be stepped.
std::optional<std::vector<Shape>> shapesWhile(RingWriter& writer, std::uint32_t sampleRate,
                                              const RingHeader& header) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(1);
        (void)::raise(SIGSTOP);
        writer.publish(sampleRate);
        ::_exit(0);
    }
    std::vector<Shape> shapes{shapeOf(header)};
    int status = 0;
    while (::waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        if (shapes.back() != shapeOf(header)) shapes.push_back(shapeOf(header));
        if (::ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) != 0) ::kill(child, SIGKILL);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
    return shapes;
}

TEST(RingPublishTest, NoInstructionLeavesAHeaderThatContradictsItself) {
    struct Case {
        const char* name;
        Shape before;
    };
    constexpr Shape kAfter{96000, 2, 16384};
    for (const auto& [name, before] : {Case{"another rate", {48000, 2, 16384}},
                                       Case{"another driver's ring", {44100, 8, 4096}}}) {
        SCOPED_TRACE(name);
        const SharedObject object;
        const auto writer = RingWriter::open(object.name());
        ASSERT_TRUE(writer);
        const int descriptor = ::shm_open(object.name().c_str(), O_RDWR, 0);
        auto* const header = static_cast<RingHeader*>(
            ::mmap(nullptr, sizeof(RingHeader), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0));
        ::close(descriptor);
        ASSERT_NE(header, MAP_FAILED);
        header->sampleRate = before.sampleRate;
        header->channelCount = before.channelCount;
        header->capacity = before.capacity;

        const auto shapes = shapesWhile(**writer, kAfter.sampleRate, *header);
        ::munmap(header, sizeof(RingHeader));
        if (!shapes) GTEST_SKIP() << "no process may be stepped here";
        EXPECT_EQ(shapes->front(), before);
        EXPECT_EQ(shapes->back(), kAfter);
        for (const auto& shape : *shapes) {
            EXPECT_TRUE(shape.capacity == 0 || shape == before || shape == kAfter)
                << shape.sampleRate << " Hz, " << shape.channelCount << " channels, "
                << shape.capacity << " frames";
        }
        EXPECT_GT(std::ranges::count(*shapes, 0U, &Shape::capacity), 0)
            << "from one to the other at a stroke";
    }
}

} // namespace
