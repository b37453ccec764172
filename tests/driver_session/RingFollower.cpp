#include "driver_session/RingFollower.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::test {

bool RingFollower::open() {
    close();
    descriptor_ = ::shm_open(name_.c_str(), O_RDWR, 0);
    struct stat status{};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) return false;
    size_ = static_cast<std::size_t>(status.st_size);
    if (size_ < kRingHeaderSize) return false;
    void* mapping = ::mmap(nullptr, size_, PROT_READ, MAP_SHARED, descriptor_, 0);
    if (mapping == MAP_FAILED) return false;
    header_ = static_cast<const RingHeader*>(mapping);
    next_ = writeIndex();
    return isReady();
}

void RingFollower::close() {
    if (header_ != nullptr) ::munmap(const_cast<RingHeader*>(header_), size_);
    if (descriptor_ >= 0) ::close(descriptor_);
    header_ = nullptr;
    descriptor_ = -1;
}

bool RingFollower::isReady() const {
    const std::uint64_t capacity = header_ != nullptr ? loadShared(header_->capacity) : 0;
    return capacity > 0 && size_ >= kRingHeaderSize + capacity * 2 * sizeof(float);
}

std::uint64_t RingFollower::writeIndex() const {
    return header_ != nullptr ? loadShared(header_->writeIndex) : 0;
}

std::uint32_t RingFollower::sampleRate() const {
    return header_ != nullptr ? loadShared(header_->sampleRate) : 0;
}

std::uint64_t RingFollower::inode() const {
    struct stat status{};
    return ::fstat(descriptor_, &status) == 0 ? status.st_ino : 0;
}

void RingFollower::gather() {
    if (!isReady()) return;
    const std::uint64_t capacity = loadShared(header_->capacity);
    const std::uint64_t end = writeIndex();
    if (end - next_ > capacity) {
        overtaken_ += end - next_ - capacity;
        next_ = end - capacity;
    }
    const auto* data = reinterpret_cast<const float*>(header_ + 1);
    for (; next_ < end; ++next_) {
        const float* frame = data + (next_ % capacity) * 2;
        samples_.insert(samples_.end(), {frame[0], frame[1]});
    }
}

} // namespace halvo::test
