#include "session/SessionCleanup.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace halvo::session {

namespace {

// Reads until the owner's end of the pipe is closed, by the owner or by the kernel.
constexpr const char* kScript = R"(trap '' HUP INT TERM
read -r _
for file in $(grep -slaF -- "$1/" /proc/[0-9]*/environ); do
    process=${file#/proc/}
    kill -9 "${process%/environ}" 2>/dev/null
done
rm -rf -- "$1"
rm -f -- "/dev/shm$2"
)";

constexpr std::chrono::milliseconds kCleaning{5000};

} // namespace

std::expected<std::unique_ptr<SessionCleanup>, std::string>
SessionCleanup::start(const std::string& directory, const std::string& ringName) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return std::unexpected(std::string("pipe: ") + std::strerror(errno));
    }
    const FileDescriptor readEnd(pipe[0]);
    FileDescriptor writeEnd(pipe[1]);
    SpawnRequest request;
    request.arguments = {"/bin/sh", "-c", kScript, "session-cleanup", directory, ringName};
    // Nothing else: an outer session's cleanup must not kill this program as one of its own.
    request.environment = {"PATH=/usr/bin:/bin"};
    request.outputFile = "/dev/null";
    request.errorFile = "/dev/null";
    request.inputDescriptor = pipe[0];
    request.lifetime = SpawnRequest::Lifetime::independent;
    auto program = SpawnedProgram::start(std::move(request));
    if (!program) return std::unexpected(program.error());
    return std::unique_ptr<SessionCleanup>(
        new SessionCleanup(std::move(writeEnd), std::move(*program)));
}

SessionCleanup::SessionCleanup(FileDescriptor pipe, std::unique_ptr<SpawnedProgram> program)
    : pipe_(std::move(pipe)), program_(std::move(program)) {}

SessionCleanup::~SessionCleanup() {
    (void)pipe_.close();
    (void)program_->wait(kCleaning);
}

} // namespace halvo::session
