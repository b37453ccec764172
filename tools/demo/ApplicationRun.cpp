#include "ApplicationRun.h"

#include "ApplicationBus.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace halvo::demo {
namespace {

using session::PrivateSession;
using std::chrono_literals::operator""s;

std::string debugLogPath(const MeasurementSession& session) {
    return session.temporaryFolder() + "/halvo_debug.log";
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

std::expected<std::unique_ptr<ApplicationRun>, std::string>
ApplicationRun::start(MeasurementSession& session, const std::vector<std::string>& extra) {
    std::error_code ignored; // the first run finds none
    std::filesystem::remove(debugLogPath(session), ignored);
    const Clock::time_point startTime = Clock::now();
    std::vector<std::string> environment{"HALVO_DRIVER_BUNDLE=" + session.programs().driverBundle,
                                         "QT_QPA_PLATFORM=offscreen"};
    environment.insert(environment.end(), extra.begin(), extra.end());
    auto program = session.privateSession().spawn({session.programs().application}, environment);
    if (!program) return std::unexpected("halvo cannot start: " + program.error());
    std::unique_ptr<ApplicationRun> run(
        new ApplicationRun(session, std::move(*program), startTime));
    if (auto ready = run->waitUntilReady(); !ready) return std::unexpected(ready.error());
    return run;
}

std::expected<void, std::string> ApplicationRun::waitUntilReady() {
    const std::string log = debugLogPath(session_);
    const auto isReady = [&] {
        return session_.privateSession().defaultSink() == MeasurementSession::kVirtualOutput &&
               contents(log).find("Launch done") != std::string::npos;
    };
    if (PrivateSession::waitFor([&] { return isReady() || !program_->isRunning(); }) && isReady())
        return {};
    if (program_->isRunning())
        return std::unexpected(complaint("halvo runs but does not take over the sound."));
    return std::unexpected(complaint("halvo ended by itself while it started."));
}

std::expected<void, std::string> ApplicationRun::quit() {
    if (!program_->isRunning()) return std::unexpected(complaint("halvo ended by itself."));
    if (const auto failure = ApplicationBus(session_.busSocket()).requestQuit())
        return std::unexpected(complaint("halvo cannot be asked to quit: " + *failure));
    const auto status = program_->wait(5s);
    if (!status) return std::unexpected(complaint("halvo did not quit within 5 seconds."));
    if (*status != 0)
        return std::unexpected(
            complaint("halvo quit with status " + std::to_string(*status) + "."));
    const auto isGivenBack = [this] {
        return session_.privateSession().defaultSink() == MeasurementSession::kSpeakers;
    };
    if (!PrivateSession::waitFor(isGivenBack, 2s))
        return std::unexpected(complaint("After halvo's quit the default output is \"" +
                                         session_.privateSession().defaultSink() +
                                         "\", not the speakers."));
    return {};
}

std::string ApplicationRun::complaint(const std::string& what) const {
    std::string text = what;
    for (const std::string& words :
         {contents(debugLogPath(session_)), program_->standardOutput(), program_->standardError()})
        if (!words.empty()) text += "\n" + words;
    return text;
}

} // namespace halvo::demo
