#include "media/BusScene.h"

#include "session/PrivateSession.h"
#include "session/SessionFiles.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace halvo::test {

using session::PrivateSession;
using session::SpawnedProgram;
using std::chrono_literals::operator""s;

bool waitFor(const std::function<bool()>& condition) {
    return PrivateSession::waitFor(condition);
}

HelperRun::HelperRun() {
    auto child =
        SpawnedChild::start({HALVO_MEDIA_HELPER_PATH, {"loop"}}, SpawnedChild::Output::pipe);
    if (!child) throw std::runtime_error(child.error());
    child_ = std::move(*child);
    output_ = child_->takeOutput();
}

HelperRun::~HelperRun() {
    if (child_->signal(SIGKILL)) (void)child_->wait(5s);
}

const std::vector<nlohmann::json>& HelperRun::payloads() {
    std::array<char, 65536> bytes;
    ssize_t count = 0;
    while ((count = ::read(output_.get(), bytes.data(), bytes.size())) > 0)
        partial_.append(bytes.data(), static_cast<std::size_t>(count));
    std::size_t end = 0;
    while ((end = partial_.find('\n')) != std::string::npos) {
        const auto line = nlohmann::json::parse(partial_.substr(0, end), nullptr, false);
        partial_.erase(0, end + 1);
        EXPECT_EQ(line.value("type", ""), "data") << line;
        payloads_.push_back(line.value("payload", nlohmann::json()));
    }
    return payloads_;
}

nlohmann::json HelperRun::last() {
    return payloads().empty() ? nlohmann::json() : payloads_.back();
}

bool HelperRun::shows(const nlohmann::json& fields) {
    return waitFor([&] {
        auto merged = last();
        if (!merged.is_object()) return false;
        merged.update(fields);
        return merged == last();
    });
}

std::optional<int> HelperRun::leave(std::chrono::milliseconds deadline) {
    output_ = FileDescriptor();
    return wait(deadline);
}

BusScene::BusScene(Bus bus) {
    auto made = session::SessionDirectory::create();
    if (!made) throw std::runtime_error(made.error());
    ownDirectory_ = std::move(*made);
    directory_ = ownDirectory_->path();
    environment_ = session::sessionEnvironment(directory_, ownDirectory_->ringName(), true);
    for (const auto& variable : environment_) { // what this process starts inherits it
        const auto name = variable.substr(0, variable.find('='));
        const char* before = std::getenv(name.c_str());
        outer_.emplace_back(name,
                            before != nullptr ? std::optional<std::string>(before) : std::nullopt);
        ::setenv(name.c_str(), variable.substr(name.size() + 1).c_str(), 1);
    }
    if (!session::writeSessionFiles(directory_)) throw std::runtime_error("cannot write");
    if (bus == Bus::running) startBus();
}

BusScene::~BusScene() {
    for (const auto& [name, value] : outer_) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
}

void BusScene::startBus() {
    bus_ = spawn({"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                  "--config-file=" + directory_ + "/bus.conf"});
    const auto answers = [&] {
        return media::ScriptedPlayer::start(busAddress(), "probe") != nullptr;
    };
    if (!waitFor(answers)) throw std::runtime_error("the bus does not start");
}

std::unique_ptr<media::ScriptedPlayer> BusScene::player(const std::string& name) {
    auto player = media::ScriptedPlayer::start(busAddress(), name);
    if (!player) throw std::runtime_error("no player " + name);
    return player;
}

std::unique_ptr<media::ScriptedPlayer>
BusScene::player(const std::string& name, const std::string& status, Metadata metadata) {
    auto made = player(name);
    made->setMetadata(std::move(metadata));
    made->setStatus(status);
    return made;
}

std::unique_ptr<SpawnedProgram> BusScene::spawn(const std::vector<std::string>& arguments) {
    session::SpawnRequest request;
    request.arguments = arguments;
    request.environment = environment_;
    request.outputFile = directory_ + "/log/programs.log";
    request.errorFile = request.outputFile;
    auto program = SpawnedProgram::start(std::move(request));
    if (!program) throw std::runtime_error(program.error());
    return std::move(*program);
}

int BusScene::command(const std::string& word) {
    auto child =
        SpawnedChild::start({HALVO_MEDIA_HELPER_PATH, {word}}, SpawnedChild::Output::discarded);
    return child ? child->wait(10s).value_or(-1) : -1;
}

std::string BusScene::file(const std::string& name, const std::string& bytes) const {
    const auto path = directory_ + "/tmp/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

} // namespace halvo::test
