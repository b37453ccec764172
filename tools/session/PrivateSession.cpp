#include "session/PrivateSession.h"

#include "session/Player.h"
#include "session/ServerView.h"
#include "session/SessionDirectory.h"
#include "session/SessionFiles.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace halvo::session {

namespace {

constexpr std::chrono::milliseconds kPoll{2};
/// A sink that has run before tells of a change by then.
constexpr std::chrono::milliseconds kUsually{300};
// For a program inside to come up; generous, because sanitized builds share two cores.
constexpr std::chrono::milliseconds kStart{15000};

bool accepts(const std::string& socketPath) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= sizeof address.sun_path) return false;
    std::ranges::copy(socketPath, address.sun_path);
    const FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connection && ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address),
                                   sizeof address) == 0;
}

bool isNear(const std::vector<float>& left, const std::vector<float>& right) {
    return std::ranges::equal(
        left, right, [](float a, float b) { return std::fabs(a - b) <= 1e-6F * std::fabs(b); });
}

} // namespace

std::vector<SimulatedOutput> simulatedOutputs(std::size_t count) {
    std::vector<SimulatedOutput> outputs;
    for (std::size_t index = 0; index < count; ++index) {
        std::string description = "Output " + std::to_string(index + 1);
        if (index == 0) description = "Speakers";
        if (index == 1) description = "Headphones";
        outputs.push_back({std::string("acc.") + static_cast<char>('a' + index), description});
    }
    return outputs;
}

std::expected<std::unique_ptr<PrivateSession>, std::string>
PrivateSession::create(Options options) {
    std::unique_ptr<PrivateSession> session(new PrivateSession(std::move(options)));
    if (const auto error = session->prepareDirectory()) return std::unexpected(*error);
    if (const auto error = session->startBus()) return std::unexpected(*error);
    if (const auto error = session->startAll()) return std::unexpected(*error);
    return session;
}

PrivateSession::PrivateSession(Options options) : options_(std::move(options)) {
    if (options_.defaultOutput.empty() && !options_.outputs.empty()) {
        options_.defaultOutput = options_.outputs.front().nodeName;
    }
}

PrivateSession::~PrivateSession() {
    stopServer();
    bus_.reset();
    ownDirectory_.reset();
}

std::optional<std::string> PrivateSession::prepareDirectory() {
    auto made = SessionDirectory::create();
    if (!made) return made.error();
    ownDirectory_ = std::move(*made);
    directory_ = ownDirectory_->path();
    ringName_ = ownDirectory_->ringName();
    environment_ = sessionEnvironment(directory_, ringName_, options_.withBus);
    if (!writeSessionFiles(directory_)) return "cannot write into " + directory_;
    return std::nullopt;
}

std::optional<std::string> PrivateSession::startBus() {
    if (!options_.withBus) return std::nullopt;
    auto error = launch(
        bus_, "dbus-daemon",
        {"--nofork", "--nopidfile", "--nosyslog", "--config-file=" + directory_ + "/bus.conf"});
    if (error) return error;
    const std::string socket = directory_ + "/run/bus";
    const bool ready =
        waitFor([&] { return accepts(socket) || !bus_->isRunning(); }, kStart) && bus_->isRunning();
    return ready ? std::nullopt
                 : std::optional("the session bus does not start: " + bus_->standardError());
}

std::optional<std::string> PrivateSession::launch(std::unique_ptr<SpawnedProgram>& slot,
                                                  const std::string& program,
                                                  const std::vector<std::string>& arguments) {
    SpawnRequest request;
    request.arguments = {program};
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    request.environment = environment_;
    request.outputFile = directory_ + "/log/" + program + ".log";
    request.errorFile = request.outputFile;
    auto started = SpawnedProgram::start(std::move(request));
    if (!started) return started.error();
    slot = std::move(*started);
    return std::nullopt;
}

std::optional<std::string> PrivateSession::startAll() {
    if (!writeServerConfiguration(directory_, options_)) return "cannot write into " + directory_;
    if (const auto error = launch(server_, "pipewire", {})) return error;
    const bool up =
        waitFor([&] { return accepts(serverSocket()) || !server_->isRunning(); }, kStart) &&
        server_->isRunning();
    if (up) view_ = ServerView::connect(serverSocket());
    if (!view_) return "the sound server does not start: " + server_->standardError();
    if (const auto error = launch(manager_, "wireplumber", {})) return error;
    if (options_.withPulse) {
        if (const auto error = launch(pulse_, "pipewire-pulse", {})) return error;
    }
    const auto isReady = [&] {
        if (!view_->hasManager()) return false;
        if (options_.withPulse && !accepts(directory_ + "/run/pulse/native")) return false;
        const bool complete = std::ranges::all_of(options_.outputs, [&](const auto& output) {
            return hasNodeWithPorts(output.nodeName);
        });
        return complete && (options_.outputs.empty() || !defaultSink().empty());
    };
    if (waitFor([&] { return isReady() || !manager_->isRunning(); }, kStart) && isReady()) {
        return std::nullopt;
    }
    return "the session manager does not settle: " + manager_->standardError();
}

std::string PrivateSession::serverSocket() const {
    return directory_ + "/run/pipewire-0";
}

void PrivateSession::setEnvironmentOfThisProcess() const {
    std::set<std::string> wanted;
    for (const auto& variable : environment_) {
        const auto equals = variable.find('=');
        wanted.insert(variable.substr(0, equals));
        ::setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
    }
    std::vector<std::string> unwanted;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        if (!wanted.contains(name)) unwanted.push_back(name);
    }
    for (const auto& name : unwanted)
        ::unsetenv(name.c_str());
}

std::expected<std::unique_ptr<SpawnedProgram>, std::string>
PrivateSession::spawn(const std::vector<std::string>& arguments,
                      const std::vector<std::string>& extra) {
    SpawnRequest request;
    request.arguments = arguments;
    request.environment = environment_;
    for (const auto& variable : extra) {
        const std::string name = variable.substr(0, variable.find('=') + 1);
        std::erase_if(request.environment,
                      [&](const std::string& entry) { return entry.starts_with(name); });
        request.environment.push_back(variable);
    }
    const std::string base = directory_ + "/log/program-" + std::to_string(++spawned_);
    request.outputFile = base + ".out";
    request.errorFile = base + ".err";
    return SpawnedProgram::start(std::move(request));
}

RunResult PrivateSession::run(const std::vector<std::string>& arguments, Milliseconds deadline) {
    auto program = spawn(arguments);
    if (!program) return {-1, program.error()};
    const auto status = (*program)->wait(deadline);
    (*program)->end();
    return {status.value_or(-1), (*program)->standardOutput() + (*program)->standardError()};
}

bool PrivateSession::hasNodeWithPorts(const std::string& nodeName) const {
    if (!view_) return false;
    const auto node = view_->node(nodeName);
    return node && node->hasPorts && !node->volumes.empty();
}

bool PrivateSession::plug(const SimulatedOutput& output) {
    if (!view_ || view_->node(output.nodeName)) return false;
    if (!view_->createNode(outputProperties(output, 500))) return false;
    options_.outputs.push_back(output);
    return waitFor([&] { return hasNodeWithPorts(output.nodeName); });
}

bool PrivateSession::unplug(const std::string& nodeName) {
    if (!view_ || !view_->destroyNode(nodeName)) return false;
    std::erase_if(options_.outputs, [&](const auto& entry) { return entry.nodeName == nodeName; });
    return waitFor([&] { return !view_->node(nodeName); });
}

void PrivateSession::stopServer() {
    view_.reset();
    pulse_.reset();
    manager_.reset();
    server_.reset();
}

void PrivateSession::killServer() {
    if (server_ && server_->signal(SIGKILL)) (void)server_->wait(kPatience);
}

bool PrivateSession::startServer() {
    return !server_ && !startAll();
}

bool PrivateSession::setDefault(const std::string& nodeName) {
    if (!view_ || !view_->setDefault(nodeName)) return false;
    return waitFor([&] { return defaultSink() == nodeName; });
}

std::string PrivateSession::defaultSink() const {
    return view_ ? view_->defaultSink() : "";
}

std::optional<std::string> PrivateSession::configuredDefault() const {
    return view_ ? view_->configuredDefault() : std::nullopt;
}

std::vector<float> PrivateSession::volume(const std::string& nodeName) const {
    const auto node = view_ ? view_->node(nodeName) : std::nullopt;
    return node ? node->volumes : std::vector<float>();
}

bool PrivateSession::isMuted(const std::string& nodeName) const {
    const auto node = view_ ? view_->node(nodeName) : std::nullopt;
    return node && node->muted;
}

bool PrivateSession::wake(const std::string& nodeName) const {
    constexpr std::size_t kEnough = 2048;
    const Player silence(serverSocket(), std::vector<float>(std::size_t{2} * options_.rate),
                         options_.rate, nodeName);
    return waitFor([&] { return silence.framesPlayed() >= kEnough; });
}

bool PrivateSession::setVolume(const std::string& nodeName, const std::vector<float>& volumes) {
    if (!view_ || !view_->setVolume(nodeName, volumes)) return false;
    const auto isShown = [&] { return isNear(volume(nodeName), volumes); };
    return waitFor(isShown, kUsually) || (wake(nodeName) && waitFor(isShown));
}

bool PrivateSession::setMuted(const std::string& nodeName, bool muted) {
    if (!view_ || !view_->setMuted(nodeName, muted)) return false;
    const auto isShown = [&] { return isMuted(nodeName) == muted; };
    return waitFor(isShown, kUsually) || (wake(nodeName) && waitFor(isShown));
}

std::vector<std::string> PrivateSession::nodeNames() const {
    std::vector<std::string> names;
    if (!view_) return names;
    for (const auto& node : view_->nodes())
        names.push_back(node.name);
    return names;
}

bool PrivateSession::waitFor(const std::function<bool()>& condition, Milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= until) return false;
        std::this_thread::sleep_for(kPoll);
    }
    return true;
}

} // namespace halvo::session
