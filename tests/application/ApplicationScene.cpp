#include "application/ApplicationScene.h"
#include "support/SessionPrograms.h"

#include "base/NumberText.h"
#include "demo/ApplicationBus.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace halvo::test {

using session::PrivateSession;

session::Options rememberedSpeakers(std::vector<float> own) {
    session::Options options;
    options.outputs[0].volumes = std::move(own);
    options.outputs[0].isRemembered = true;
    options.outputs[1].volumes = {0.5F, 0.5F};
    return options;
}

ApplicationScene::ApplicationScene(session::Options options) {
    auto created = PrivateSession::create(std::move(options));
    // Reported by the test framework as the test's failure.
    if (!created) throw std::runtime_error(created.error());
    session_ = std::move(*created);
}

void ApplicationScene::startDriver() {
    driver_.reset();
    auto started = session_->spawn({HALVO_AUDIO_DEVICE});
    if (!started) throw std::runtime_error(started.error());
    driver_ = std::move(*started);
    if (!PrivateSession::waitFor([this] { return !session_->volume(kVirtualSink).empty(); })) {
        throw std::runtime_error("no virtual device: " + driver_->standardError());
    }
}

void ApplicationScene::startApplication(const std::vector<std::string>& extra) {
    application_.reset();
    (void)std::filesystem::remove(session_->directory() + "/tmp/halvo_debug.log");
    std::vector<std::string> environment{std::string("HALVO_DRIVER_BUNDLE=") +
                                         HALVO_DRIVER_BUNDLE_PATH};
    environment.insert(environment.end(), extra.begin(), extra.end());
    auto started = session_->spawn({HALVO_APPLICATION}, environment);
    if (!started) throw std::runtime_error(started.error());
    application_ = std::move(*started);
}

void ApplicationScene::startBoth() {
    startDriver();
    startApplication();
    if (!isReady()) throw std::runtime_error("not ready: " + debugLog() + standardOutput());
}

bool ApplicationScene::isReady() {
    return PrivateSession::waitFor([this] {
        return debugLog().contains("Launch done") && session_->defaultSink() == kVirtualSink;
    });
}

std::optional<int> ApplicationScene::quit() {
    const auto failure = demo::ApplicationBus(session_->directory() + "/run/bus").requestQuit();
    if (failure) throw std::runtime_error(*failure);
    return application_->wait(PrivateSession::kPatience);
}

void ApplicationScene::writePresets(const std::vector<float>& bands, float preamp) {
    const std::filesystem::path folder = session_->directory() + "/data/Halvo";
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / "presets.json");
    file << R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","name":"Test","isFactory":false,)"
         << R"("preamp":)" << numberText(preamp) << R"(,"bands":[)";
    for (std::size_t i = 0; i < bands.size(); ++i)
        file << (i ? "," : "") << numberText(bands[i]);
    file << "]}]";
}

std::string ApplicationScene::savedSettings() const {
    return read(session_->directory() + "/config/halvo/defaults.json");
}

std::string ApplicationScene::debugLog() const {
    return read(session_->directory() + "/tmp/halvo_debug.log");
}

bool ApplicationScene::prints(const std::string& text) {
    return PrivateSession::waitFor([&] { return standardOutput().contains(text); });
}

bool ApplicationScene::hasDirtyRecord() const {
    const auto settings = savedSettings();
    return settings.contains("halvo_dirtySession") ||
           settings.contains("halvo_originalOutputUID") ||
           settings.contains("halvo_originalRealVolume");
}

std::vector<int> ApplicationScene::processes(const std::string& program) const {
    return processesOf(session_->directory(), program);
}

int ApplicationScene::guard() {
    std::vector<int> found;
    const bool isThere = PrivateSession::waitFor([&] {
        found = processes("halvo-session-guard");
        return found.size() == 1;
    });
    if (!isThere) throw std::runtime_error("no session guard");
    return found.front();
}

std::unique_ptr<session::Recorder> ApplicationScene::record(const std::string& nodeName) {
    auto recorder = std::make_unique<session::Recorder>(session_->serverSocket(), nodeName,
                                                        session_->options().rate, 120.0);
    if (!PrivateSession::waitFor([&] { return recorder->isRunning(); })) {
        throw std::runtime_error("cannot record " + nodeName);
    }
    return recorder;
}

std::unique_ptr<session::Player> ApplicationScene::play(std::vector<float> samples) {
    auto player = std::make_unique<session::Player>(session_->serverSocket(), std::move(samples),
                                                    session_->options().rate);
    if (!PrivateSession::waitFor([&] { return player->hasStarted(); })) {
        throw std::runtime_error("the client does not play");
    }
    return player;
}

std::string ApplicationScene::read(const std::string& path) const {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace halvo::test
