#include "session/SessionDirectory.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
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

std::expected<std::unique_ptr<SessionDirectory>, std::string>
SessionDirectory::create(std::filesystem::path base) {
    std::error_code error;
    if (base.empty()) base = std::filesystem::temp_directory_path(error);
    std::string path = (error ? std::filesystem::path("/tmp") : base) / "halvo-session-XXXXXX";
    std::array<int, 2> pipe{-1, -1};
    const bool isPiped = ::pipe2(pipe.data(), O_CLOEXEC) == 0;
    const FileDescriptor readEnd(pipe[0]);
    FileDescriptor writeEnd(pipe[1]);
    if (!isPiped || ::mkdtemp(path.data()) == nullptr) {
        return std::unexpected("cannot make a temporary directory: " +
                               std::generic_category().message(errno));
    }
    std::unique_ptr<SessionDirectory> directory(new SessionDirectory(std::move(path)));
    directory->pipe_ = std::move(writeEnd);
    SpawnRequest request;
    request.arguments = {
        "/bin/sh", "-c", kScript, "session-cleanup", directory->path(), directory->ringName()};
    // Nothing else: an outer session's cleanup must not kill this program as one of its own.
    request.environment = {"PATH=/usr/bin:/bin"};
    request.outputFile = "/dev/null";
    request.errorFile = "/dev/null";
    request.inputDescriptor = readEnd.get();
    request.lifetime = SpawnRequest::Lifetime::independent;
    auto program = SpawnedProgram::start(std::move(request));
    if (!program) {
        (void)::rmdir(directory->path().c_str()); // just made, and empty
        return std::unexpected(program.error());
    }
    directory->cleanup_ = std::move(*program);
    return directory;
}

SessionDirectory::~SessionDirectory() {
    (void)pipe_.close();
    if (cleanup_) (void)cleanup_->wait(kCleaning);
}

} // namespace halvo::session
