#include "unit/nowplaying/NowPlayingFixture.h"

#include <atomic>
#include <thread>
#include <vector>

using namespace halvo;

namespace {

/// Runs each piece of work on its own thread.
class Threads final : public BackgroundQueue {
  public:
    void async(std::function<void()> work) override { threads_.emplace_back(std::move(work)); }
    void join() {
        for (auto& thread : threads_)
            thread.join();
        threads_.clear();
    }

  private:
    std::vector<std::thread> threads_;
};

class CountingLog final : public SystemLog {
  public:
    void write(const std::string& /*line*/) override { ++lines; }
    std::atomic<int> lines = 0;
};

using NowPlayingThreads = NowPlayingTest;

} // namespace

/// For ThreadSanitizer: reading, polls and commands at once, while the main thread runs.
TEST_F(NowPlayingThreads, BackgroundWorkTouchesNothingThatIsPublished) {
    constexpr int kLines = 500;
    Threads threads;
    CountingLog counting;
    NowPlayingMonitor busy(
        {queue, threads, launcher, scripts, session, images, helper, files, counting});
    startHelper();
    busy.locateHelperFiles();
    busy.startHelperProcess();
    busy.startAppleScriptPolling();
    int published = 0;
    std::string last;
    const auto tracks = busy.currentTrack.didChange([&](const auto& track) {
        if (!track) return;
        ++published;
        last = track->title;
    });
    for (int i = 0; i < kLines; ++i) {
        launcher.say("no JSON\n" + line(R"("artworkDataBase64":"aW1hZ2U=","title":")" +
                                        std::to_string(i) + "\""));
        queue.flush();
    }
    threads.join();
    queue.flush();
    EXPECT_EQ(published, kLines);
    EXPECT_EQ(last, std::to_string(kLines - 1)) << "in the order of the lines";
    EXPECT_GE(counting.lines, 2 * kLines);
}
