#include "realtime/ForkedRun.h"
#include "realtime/RenderScene.h"
#include "realtime/SystemCallFilter.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace halvo::test {

namespace {

void* volatile held = nullptr; // otherwise the compiler removes the allocation

void requireFilter() {
    if (!forbidSystemCalls()) endWithOffence("no filter to be had");
}

} // namespace

TEST(RenderPath, MakesNoSystemCall) {
    const Ending ending = runForked([] {
        RenderScene scene;
        // The filter cannot be removed: the render thread ends the process under it.
        scene.run(
            requireFilter, [](void (*work)(void*), void* context) { work(context); }, endCleanly);
    });
    EXPECT_TRUE(ending.clean) << ending.offence << " in the cycle: " << ending.place;
    EXPECT_EQ(ending.place, RenderScene::cycles().back().name);
}

TEST(SystemCallFilter, NoticesEveryCall) {
    const auto callNumber = [](long number) { return "system call " + std::to_string(number); };
    const struct {
        const char* name;
        void (*call)();
        std::string expected;
    } callers[] = {
        {"its own parent", [] { (void)getppid(); }, callNumber(SYS_getppid)},
        {"a nap",
         [] {
             const timespec moment{0, 1};
             (void)nanosleep(&moment, nullptr);
         },
         callNumber(SYS_clock_nanosleep)},
        {"a line of output", [] { (void)!write(2, "", 1); }, callNumber(SYS_write)},
        {"memory from the kernel", [] { held = std::malloc(std::size_t{1} << 26); },
         callNumber(SYS_mmap)},
    };
    for (const auto& caller : callers) {
        const Ending ending = runForked([&caller] {
            requireFilter();
            caller.call();
        });
        EXPECT_FALSE(ending.clean) << caller.name << " went unnoticed";
        EXPECT_EQ(ending.offence, caller.expected) << caller.name;
    }
    EXPECT_TRUE(runForked(requireFilter).clean);
}

} // namespace halvo::test
