#pragma once

#include "fake/FakeMainQueue.h"
#include "fake/FakeProcesses.h"
#include "fake/FakeServices.h"
#include "nowplaying/NowPlayingMonitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace halvo {

using namespace std::chrono_literals;

/// A monitor on fakes.
class NowPlayingTest : public testing::Test {
  protected:
    using Lines = std::vector<std::string>;

    CallLog calls;
    FakeMainQueue queue;
    FakeBackgroundQueue background;
    FakeChildProcessLauncher launcher{calls};
    FakeScriptRunner scripts;
    FakeHTTPSession session;
    FakeImageReader images;
    FakeMediaHelper helper;
    FakeFileSystem files;
    FakeSystemLog log;
    std::unique_ptr<NowPlayingMonitor> monitor =
        std::make_unique<NowPlayingMonitor>(NowPlayingServices{
            queue, background, launcher, scripts, session, images, helper, files, log});

    ~NowPlayingTest() override { queue.discard(); }

    void startHelper() {
        helper.folder = "/bundle";
        files.files = {{"/bundle/media_helper.dylib", ""}, {"/bundle/run.pl", ""}};
        monitor->locateHelperFiles();
        monitor->startHelperProcess();
        log.lines.clear();
    }
    /// Runs all pending background and main-thread work.
    void settle() {
        background.flush();
        queue.flush();
    }
    void say(const std::string& bytes) {
        launcher.say(bytes);
        settle();
    }
    void advance(MainQueue::Duration time) {
        queue.advance(time);
        settle();
    }
    Lines takeLog() { return std::exchange(log.lines, {}); }
    std::string title() {
        const auto& track = monitor->currentTrack.get();
        return track ? track->title : "none";
    }
};

/// A line of the helper with these members in its payload.
inline std::string line(const std::string& members) {
    return R"({"type":"data","payload":{)" + members + "}}\n";
}

} // namespace halvo
