#include "posix/RingName.h"

#include "platform/RingLayout.h"
#include "posix/FileDescriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo {

namespace {

constexpr std::size_t kLongestName = 250;

bool isValid(std::string_view name) {
    return name.size() > 1 && name.size() <= kLongestName && name.front() == '/' &&
           name.find('/', 1) == std::string_view::npos;
}

bool belongsToAnotherUser(const std::string& name) {
    const FileDescriptor object(::shm_open(name.c_str(), O_RDONLY, 0));
    if (!object) return errno == EACCES;
    struct stat status{};
    return ::fstat(object.get(), &status) == 0 && status.st_uid != ::geteuid();
}

} // namespace

std::string ringName() {
    const char* chosen = std::getenv("HALVO_RING_NAME");
    if (chosen != nullptr && isValid(chosen)) return chosen;
    return ownedRingName(kRingName);
}

std::string ownedRingName(const std::string& base) {
    return belongsToAnotherUser(base) ? base + "_" + std::to_string(::geteuid()) : base;
}

} // namespace halvo
