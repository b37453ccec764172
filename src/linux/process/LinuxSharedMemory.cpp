#include "linux/process/LinuxSharedMemory.h"

#include "platform/RingLayout.h"
#include "posix/RingName.h"

#include <QSocketNotifier>

#include <array>
#include <cstring>
#include <set>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

constexpr const char* kDirectory = "/dev/shm"; // where the C library keeps the objects
constexpr std::uint32_t kEvents =
    IN_CREATE | IN_DELETE | IN_MODIFY | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO;

std::string_view withoutSlash(std::string_view name) {
    return name.starts_with('/') ? name.substr(1) : name;
}

/// The objects that were touched, and whether the system lost count.
struct Touched {
    std::set<std::string, std::less<>> names;
    bool all = false;
};

Touched drain(int events) {
    Touched touched;
    alignas(inotify_event) std::array<char, 8192> buffer{};
    for (auto count = ::read(events, buffer.data(), buffer.size()); count > 0;
         count = ::read(events, buffer.data(), buffer.size())) {
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + offset, sizeof(event));
            if ((event.mask & IN_Q_OVERFLOW) != 0) touched.all = true;
            // The name is padded with zeros.
            if (event.len > 0) touched.names.emplace(buffer.data() + offset + sizeof(event));
            offset += sizeof(event) + event.len;
        }
    }
    return touched;
}

/// Whether what happened may concern the object that `name` stands for, now `current`. A ring under
/// the common name also decides whether a name of this user's own is in use instead.
bool concerns(const Touched& touched, const std::string& name, const std::string& current) {
    if (touched.all) return true;
    return touched.names.contains(withoutSlash(current)) ||
           (current.starts_with(name) && touched.names.contains(withoutSlash(name)));
}

} // namespace

struct LinuxSharedMemory::Watcher {
    std::string name;
    std::function<void()> changed;
    bool cancelled = false;
};

LinuxSharedMemory::LinuxSharedMemory() : watchers_(std::make_shared<Watchers>()) {}
LinuxSharedMemory::~LinuxSharedMemory() = default;

std::string LinuxSharedMemory::systemName(const std::string& name) const {
    return name == kRingName ? ringName() : name;
}

Subscription LinuxSharedMemory::watch(const char* name, std::function<void()> changed) {
    if (!notifier_ && !startWatching()) return {};
    auto watcher = std::make_shared<Watcher>(Watcher{name, std::move(changed)});
    watchers_->push_back(watcher);
    return Subscription([watchers = std::weak_ptr(watchers_), watcher] {
        watcher->cancelled = true;
        if (const auto alive = watchers.lock()) std::erase(*alive, watcher);
    });
}

bool LinuxSharedMemory::startWatching() {
    events_ = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!events_ || ::inotify_add_watch(events_.get(), kDirectory, kEvents) < 0) return false;
    notifier_ = std::make_unique<QSocketNotifier>(events_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { readEvents(); });
    return true;
}

void LinuxSharedMemory::readEvents() {
    const auto touched = drain(events_.get());
    // A copy: a watcher may end itself or others, or start new ones.
    const Watchers current = *watchers_;
    for (const auto& watcher : current) {
        if (!watcher->cancelled && concerns(touched, watcher->name, systemName(watcher->name)))
            watcher->changed();
    }
}

} // namespace halvo
