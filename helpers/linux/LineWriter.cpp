#include "LineWriter.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace halvo::helper {

LineWriter::LineWriter(sd_event* event, std::function<void()> onIdle) : onIdle_(std::move(onIdle)) {
    struct stat status{};
    const bool isPipe = ::fstat(STDOUT_FILENO, &status) == 0 && S_ISFIFO(status.st_mode);
    if (!isPipe) return; // other processes share a terminal's flags
    const int flags = ::fcntl(STDOUT_FILENO, F_GETFL);
    (void)::fcntl(STDOUT_FILENO, F_SETFL, flags | O_NONBLOCK); // a pipe takes it
    sd_event_source* source = nullptr;
    // With no event requested it still reports a closed pipe.
    if (sd_event_add_io(event, &source, STDOUT_FILENO, 0, &LineWriter::onWritable, this) >= 0) {
        writable_.reset(source);
    }
}

bool LineWriter::write(std::string line) {
    line_ = std::move(line);
    written_ = 0;
    return writeMore();
}

bool LineWriter::writeMore() {
    while (!isIdle()) {
        const ssize_t count =
            ::write(STDOUT_FILENO, line_.data() + written_, line_.size() - written_);
        if (count >= 0) {
            written_ += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN && writable_) {
            return sd_event_source_set_io_events(writable_.get(), EPOLLOUT) >= 0;
        } else if (errno != EINTR) {
            return false;
        }
    }
    line_ = {};
    written_ = 0;
    return true;
}

int LineWriter::onWritable(sd_event_source* source, int /*descriptor*/, std::uint32_t events,
                           void* data) {
    auto& self = *static_cast<LineWriter*>(data);
    const bool isBroken = (events & (EPOLLERR | EPOLLHUP)) != 0;
    if (isBroken || !self.writeMore()) {
        return sd_event_exit(sd_event_source_get_event(source), 0);
    }
    if (!self.isIdle()) return 0;
    (void)sd_event_source_set_io_events(source, 0); // fewer events always fit
    self.onIdle_();
    return 0;
}

} // namespace halvo::helper
