#include "realtime/ForkedRun.h"
#include "realtime/RenderScene.h"
#include "realtime/RenderThread.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

namespace halvo::test {

namespace {

/// Something a render thread must not do.
struct Offence {
    const char* name;
    void (*commit)();
};

// So that the compiler cannot remove it as unused.
void* volatile sink = nullptr;
std::vector<int>* lent = new std::vector<int>(100);
std::mutex mutex;
std::shared_mutex sharedMutex;

const Offence kOffences[] = {
    {"new", [] { sink = new int; }},
    {"a large new", [] { sink = new char[1 << 24]; }},
    {"delete", [] { delete lent; }},
    {"a vector that grows", [] { lent->resize(100'000); }},
    {"a string",
     [] {
         const std::string text(100, 'x');
         sink = const_cast<char*>(text.data());
     }},
    {"a mutex", [] { const std::lock_guard lock(mutex); }},
    {"a mutex shared by readers", [] { const std::shared_lock lock(sharedMutex); }},
    {"an exception",
     [] {
         try {
             throw std::string("trouble");
         } catch (const std::string& caught) {
             sink = const_cast<char*>(caught.data());
         }
     }},
};

void runCommit(void* context) {
    static_cast<const Offence*>(context)->commit();
}

} // namespace

TEST(RenderPath, NeitherAllocatesNorLocks) {
    const Ending ending = runForked([] {
        RenderScene scene;
        scene.run([] {}, runAsRenderThread, [] {});
    });
    EXPECT_TRUE(ending.clean) << ending.offence << " in the cycle: " << ending.place;
    EXPECT_EQ(ending.place, RenderScene::cycles().back().name);
}

TEST(RenderRules, NoticeEveryOffence) {
    for (const auto& offence : kOffences) {
        // Without the rules the same work passes, so the rules are what ends it below.
        EXPECT_TRUE(runForked(offence.commit).clean) << offence.name;

        const Ending ending = runForked([&offence] {
            (void)std::freopen("/dev/null", "w", stderr); // expected, not worth showing
            runAsRenderThread(runCommit, const_cast<Offence*>(&offence));
        });
        EXPECT_FALSE(ending.clean) << offence.name << " went unnoticed";
    }
}

} // namespace halvo::test
