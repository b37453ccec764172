#include "qt/QtApplication.h"

#include "unit/qt/QtTestLoop.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using halvo::QtApplication;
using halvo::QtMainQueue;
using namespace std::chrono_literals;
using Log = std::vector<std::string>;

TEST(QtApplicationTests, AQuitIsNeverLostAndLetsTheCurrentWorkFinish) {
    auto& application = halvo::test::application();
    struct Case {
        const char* name;
        std::function<void(QtApplication&)> beforeTheLoop;
        std::function<void(QtApplication&)> duringStart;
    };
    const auto nothing = [](QtApplication&) {};
    const auto quit = [](QtApplication& program) { program.terminate(); };
    const auto quitInNestedLoop = [](QtApplication& program) {
        program.terminate();
        QCoreApplication::processEvents(); // handles the request before there is a handler
    };
    const std::vector<Case> cases{
        {"before the loop", quit, nothing},
        {"before the loop, taken by another one", quitInNestedLoop, nothing},
        {"during start-up", nothing, quit},
        {"twice", quit, quit},
    };
    for (const auto& [name, beforeTheLoop, duringStart] : cases) {
        SCOPED_TRACE(name);
        QtApplication program;
        QtMainQueue queue;
        Log log;
        const auto connection = QObject::connect(&application, &QCoreApplication::aboutToQuit,
                                                 [&log] { log.emplace_back("about to quit"); });
        queue.async([&] {
            duringStart(program);
            log.emplace_back("started");
        });
        beforeTheLoop(program);
        EXPECT_EQ(program.run(), 0);
        QObject::disconnect(connection);
        EXPECT_EQ(log, (Log{"started", "about to quit"}));
    }
}

} // namespace
