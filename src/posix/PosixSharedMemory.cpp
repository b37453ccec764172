#include "posix/PosixSharedMemory.h"

#include "platform/RingLayout.h"
#include "posix/FileDescriptor.h"
#include "posix/MappingGuard.h"
#include "posix/RingIdentity.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace halvo {

namespace {

/// Not every system gives shared memory objects an inode number.
bool isNumbered(const struct stat& object) {
    return object.st_ino != 0;
}

bool sameObject(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Whether `memory` maps the ring behind `descriptor`; false when that is no ring.
bool sameRing(const void* memory, int descriptor, std::int64_t size) {
    if (size < static_cast<std::int64_t>(kRingHeaderSize)) return false;
    void* named = ::mmap(nullptr, kRingHeaderSize, PROT_READ, MAP_SHARED, descriptor, 0);
    if (named == MAP_FAILED) return false;
    const bool same =
        isSameRing(*static_cast<const RingHeader*>(memory), *static_cast<const RingHeader*>(named));
    (void)::munmap(named, kRingHeaderSize); // just mapped: cannot fail
    return same;
}

} // namespace

std::int32_t PosixSharedMemory::open(const char* name) {
    return ::shm_open(systemName(name).c_str(), O_RDWR, 0666);
}

std::int64_t PosixSharedMemory::size(std::int32_t descriptor) {
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 ? status.st_size : -1;
}

void* PosixSharedMemory::map(std::int32_t descriptor, std::int64_t size) {
    if (size < 1) return nullptr;
    const auto length = static_cast<std::size_t>(size);
    void* memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) return nullptr;
    if (MappingGuard::add(memory, length)) return memory;
    (void)::munmap(memory, length); // just mapped: cannot fail
    return nullptr;
}

void PosixSharedMemory::unmap(void* memory, std::int64_t size) {
    MappingGuard::remove(memory);
    (void)::munmap(memory, static_cast<std::size_t>(size)); // nothing can be done about it
}

void PosixSharedMemory::close(std::int32_t descriptor) {
    const FileDescriptor closed(descriptor);
}

bool PosixSharedMemory::isCurrent(const char* name, std::int32_t descriptor, const void* memory,
                                  std::int64_t size) {
    const FileDescriptor present(::shm_open(systemName(name).c_str(), O_RDONLY, 0));
    struct stat own{};
    struct stat now{};
    if (!present || ::fstat(descriptor, &own) != 0 || ::fstat(present.get(), &now) != 0 ||
        now.st_size != size || MappingGuard::isLost(memory)) {
        return false;
    }
    return isNumbered(now) ? sameObject(own, now) : sameRing(memory, present.get(), size);
}

} // namespace halvo
