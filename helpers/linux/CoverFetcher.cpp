#include "CoverFetcher.h"

#include "Cover.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <sys/epoll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace halvo::helper {

namespace {

constexpr const char* kProgram = "halvo-cover-fetch";
/// From the end of its output, or a kill, to its end.
constexpr std::chrono::milliseconds kEnding{500};

/// Beside this program.
std::string programPath() {
    std::error_code error;
    return (std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / kProgram)
        .string();
}

} // namespace

CoverFetcher::CoverFetcher(sd_event* event, Handler handler)
    : event_(event), handler_(std::move(handler)) {}

void CoverFetcher::stop() {
    readable_.reset();
    output_ = FileDescriptor();
    bytes_.clear();
    bytes_.shrink_to_fit();
    if (!program_) return;
    (void)program_->signal(SIGKILL); // it may have exited already
    (void)program_->wait(kEnding);
    program_.reset();
}

void CoverFetcher::fetch(const std::string& url) {
    stop();
    url_ = url;
    auto program = SpawnedChild::start({programPath(), {url}}, SpawnedChild::Output::pipe);
    if (!program) return; // the track has no cover then
    program_ = std::move(*program);
    output_ = program_->takeOutput();
    sd_event_source* source = nullptr;
    if (sd_event_add_io(event_, &source, output_.get(), EPOLLIN, &CoverFetcher::onReadable, this) <
        0) {
        return stop();
    }
    readable_.reset(source);
}

int CoverFetcher::onReadable(sd_event_source* /*source*/, int /*descriptor*/,
                             std::uint32_t /*events*/, void* data) {
    static_cast<CoverFetcher*>(data)->read();
    return 0;
}

void CoverFetcher::read() {
    std::array<char, 65536> block;
    const ssize_t count = ::read(output_.get(), block.data(), block.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) return finish();
    bytes_.append(block.data(), static_cast<std::size_t>(count));
    if (bytes_.size() > kLargestCover) stop();
}

void CoverFetcher::finish() {
    const auto status = program_->wait(kEnding);
    const auto bytes = status == 0 ? std::exchange(bytes_, {}) : std::string();
    if (status) program_.reset();
    stop();
    handler_(url_, bytes);
}

} // namespace halvo::helper
