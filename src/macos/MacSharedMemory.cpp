#include "macos/MacSharedMemory.h"

#include "posix/FileDescriptor.h"
#include "posix/RingIdentity.h"

#include <QTimer>

#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

namespace halvo {

namespace {

constexpr int kPeriod = 1000; // milliseconds

/// The observable state of an object.
struct Appearance {
    std::int64_t size = 0;
    RingFormat format;

    bool operator==(const Appearance&) const = default;
};

/// Nothing while the object does not exist.
std::optional<Appearance> look(const std::string& name) {
    const FileDescriptor object(::shm_open(name.c_str(), O_RDONLY, 0));
    struct stat status{};
    if (!object || ::fstat(object.get(), &status) != 0) return std::nullopt;
    Appearance seen{.size = status.st_size, .format = {}};
    if (seen.size < static_cast<std::int64_t>(kRingHeaderSize)) return seen;
    void* memory = ::mmap(nullptr, kRingHeaderSize, PROT_READ, MAP_SHARED, object.get(), 0);
    if (memory == MAP_FAILED) return seen;
    seen.format = formatOf(*static_cast<const RingHeader*>(memory));
    (void)::munmap(memory, kRingHeaderSize); // of a mapping just made: cannot fail
    return seen;
}

} // namespace

std::string MacSharedMemory::systemName(const std::string& name) const {
    const char* other = std::getenv("HALVO_RING_NAME");
    return name == kRingName && other != nullptr && *other != '\0' ? other : name;
}

Subscription MacSharedMemory::watch(const char* name, std::function<void()> changed) {
    auto timer = std::make_shared<QTimer>();
    timer->setTimerType(Qt::VeryCoarseTimer);
    const std::string known = systemName(name);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(),
                     [known, last = look(known), changed = std::move(changed)]() mutable {
                         const auto now = look(known);
                         if (now != std::exchange(last, now)) changed();
                     });
    timer->start(kPeriod);
    return Subscription([timer] { timer->stop(); });
}

} // namespace halvo
