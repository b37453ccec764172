#include "fake/FakeMainQueue.h"
#include "linux/pipewire/PipeWireListeners.h"

#include <gtest/gtest.h>
#include <thread>

namespace halvo {
namespace {

using Topic = PipeWireListeners::Topic;

TEST(ListenersTest, RunInTheMainQueueOnceForWhatTheyHaveNotSeen) {
    FakeMainQueue queue;
    PipeWireListeners listeners(queue);
    int lists = 0;
    int volumes = 0;
    listeners.add(Topic::deviceList, 0, [&] { ++lists; });
    listeners.add(Topic::volume, 7, [&] { ++volumes; });
    listeners.post(Topic::deviceList);
    listeners.post(Topic::deviceList);
    listeners.post(Topic::volume, 8);
    EXPECT_EQ(lists, 0) << "never inside the call that posts";
    queue.runTurn();
    EXPECT_EQ(lists, 1);
    EXPECT_EQ(volumes, 0);
    listeners.post(Topic::deviceList);
    listeners.post(Topic::volume, 7);
    queue.runTurn();
    EXPECT_EQ(lists, 2);
    EXPECT_EQ(volumes, 1);
}

TEST(ListenersTest, MayOutliveTheirOwnerInTheQueue) {
    FakeMainQueue queue;
    int calls = 0;
    {
        PipeWireListeners listeners(queue);
        listeners.add(Topic::deviceList, 0, [&] { ++calls; });
        listeners.post(Topic::deviceList);
    }
    queue.flush();
    EXPECT_EQ(calls, 0);
}

TEST(ListenersTest, MaySilenceFromInside) {
    FakeMainQueue queue;
    PipeWireListeners listeners(queue);
    int calls = 0;
    listeners.add(Topic::deviceList, 0, [&] {
        ++calls;
        listeners.silence();
    });
    listeners.add(Topic::deviceList, 0, [&] { ++calls; });
    listeners.post(Topic::deviceList);
    queue.flush();
    EXPECT_EQ(calls, 1) << "the second one waited in the queue";
}

TEST(ListenersTest, SilencingWaitsForTheOneThatRuns) {
    FakeMainQueue queue;
    PipeWireListeners listeners(queue);
    std::atomic<bool> entered{false};
    std::atomic<bool> asked{false};
    std::atomic<bool> left{false};
    bool leftBefore = false;
    listeners.add(Topic::deviceList, 0, [&] {
        entered = true;
        while (!asked)
            std::this_thread::yield();
        // Long enough for the other thread to start waiting; correctness does not depend on it.
        for (int i = 0; i < 20; ++i)
            std::this_thread::yield();
        left = true;
    });
    std::thread other([&] {
        while (!entered)
            std::this_thread::yield();
        asked = true;
        listeners.silence();
        leftBefore = left;
    });
    listeners.post(Topic::deviceList);
    queue.flush();
    other.join();
    EXPECT_TRUE(leftBefore);
}

} // namespace
} // namespace halvo
