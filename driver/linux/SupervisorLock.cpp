#include "driver/linux/SupervisorLock.h"

#include "driver/linux/ProcessDescriptor.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace halvo::driver {

namespace {

constexpr SupervisorLock::Milliseconds kRetry{50};

/// Where the sound server of this user has its socket; empty when nobody says.
std::string runtimeDirectory() {
    for (const char* variable : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return "";
}

struct flock wholeFile() {
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

SupervisorLock::SupervisorLock() {
    const std::string directory = runtimeDirectory();
    if (directory.empty()) return;
    const std::string path = directory + "/halvo-audio-device.lock";
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
}

SupervisorLock::~SupervisorLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool SupervisorLock::acquire(Milliseconds patience) const {
    if (descriptor_ < 0) return true;
    const auto end = std::chrono::steady_clock::now() + patience;
    // Of the process, not of the open file: the driver that is forked off does not inherit it.
    for (auto lock = wholeFile(); ::fcntl(descriptor_, F_SETLK, &lock) != 0;) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(kRetry);
    }
    return true;
}

std::optional<pid_t> SupervisorLock::holder() const {
    auto lock = wholeFile();
    if (descriptor_ < 0 || ::fcntl(descriptor_, F_GETLK, &lock) != 0) return std::nullopt;
    // 0: it runs where its number means nothing here.
    if (lock.l_type == F_UNLCK || lock.l_pid <= 0) return std::nullopt;
    return lock.l_pid;
}

bool SupervisorLock::endHolder(Milliseconds patience) const {
    const auto found = holder();
    if (!found) return true;
    const ProcessDescriptor process(*found);
    // Asked again: between the two calls the number may have become somebody else's.
    if (holder() != found) return !holder();
    if (!process.signal(SIGTERM)) return !holder();
    (void)process.waitForEnd(patience);
    return !holder();
}

} // namespace halvo::driver
