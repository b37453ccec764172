#include "driver/RingWriter.h"

#include "posix/MappingGuard.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace halvo::driver {

namespace {

constexpr std::size_t kSize =
    kRingHeaderSize + std::size_t{RingWriter::kCapacity} * RingWriter::kChannels * sizeof(float);
// Some hundred thousand years of sound: a counter beyond this was never a counter.
constexpr std::uint64_t kLargestIndex = std::uint64_t{1} << 60;
constexpr int kAttempts = 16;

std::unexpected<RingFailure> failure(RingFailure::Reason reason, std::string detail) {
    return std::unexpected(RingFailure{reason, std::move(detail)});
}

std::unexpected<RingFailure> systemFailure(const char* action, int error) {
    return failure(RingFailure::Reason::notCreatable,
                   std::string(action) + ": " + std::strerror(error));
}

/// An open descriptor until it is released to somebody.
class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }
    Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int get() const { return value_; }
    int release() { return std::exchange(value_, -1); }

  private:
    int value_;
};

bool isNamed(const std::string& name, int descriptor) {
    const Descriptor named(::shm_open(name.c_str(), O_RDWR, 0));
    struct stat ours{};
    struct stat theirs{};
    return named.get() >= 0 && ::fstat(descriptor, &ours) == 0 &&
           ::fstat(named.get(), &theirs) == 0 && ours.st_dev == theirs.st_dev &&
           ours.st_ino == theirs.st_ino;
}

/// Takes the object's lock; some systems know none for shared memory, and start one driver only.
bool lock(int descriptor) {
    // NOLINTNEXTLINE(misc-redundant-expression): two numbers on some systems, one on others
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno == ENOTSUP || errno == EOPNOTSUPP;
}

constexpr mode_t kOwnerOnly = 0600;

/// Not every system can change a shared object's mode later, hence the mask.
Descriptor create(const std::string& name, mode_t mode) {
    if (mode == kOwnerOnly) return Descriptor(::shm_open(name.c_str(), O_RDWR | O_CREAT, mode));
    const mode_t mask = ::umask(0);
    Descriptor descriptor(::shm_open(name.c_str(), O_RDWR | O_CREAT, mode));
    const int error = errno;
    ::umask(mask);
    errno = error;
    return descriptor;
}

std::expected<Descriptor, RingFailure> openLocked(const std::string& name, mode_t mode) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Descriptor descriptor = create(name, mode);
        if (descriptor.get() < 0) return systemFailure("cannot open", errno);
        struct stat status{};
        if (::fstat(descriptor.get(), &status) != 0) return systemFailure("cannot read", errno);
        if (status.st_uid != ::geteuid()) {
            return failure(RingFailure::Reason::notCreatable, "belongs to another user");
        }
        if (!lock(descriptor.get())) {
            if (errno == EINTR) continue;
            return failure(RingFailure::Reason::alreadyRunning, "another driver writes it");
        }
        // Between the two calls it may have been removed and made anew by somebody else.
        if (isNamed(name, descriptor.get())) return descriptor;
    }
    return failure(RingFailure::Reason::notCreatable, "does not stay in place");
}

/// Grows the object where it is too short; real memory behind it where the system can promise it,
/// so that a full disk shows now and not as a bus error later. The error number, 0 for success.
int reserve(int descriptor) {
    struct stat status{};
    if (::fstat(descriptor, &status) != 0) return errno;
#if defined(__linux__)
    int error = EINTR;
    while (error == EINTR)
        error = ::posix_fallocate(descriptor, 0, static_cast<off_t>(kSize));
    return error;
#else
    if (status.st_size >= static_cast<off_t>(kSize)) return 0;
    return ::ftruncate(descriptor, static_cast<off_t>(kSize)) == 0 ? 0 : errno;
#endif
}

// A function object, not a function: what is called is known, so it can be proven and inlined.
constexpr auto finiteOrZero = [](float sample) noexcept {
    constexpr std::uint32_t kExponent = 0x7F800000U;
    return (std::bit_cast<std::uint32_t>(sample) & kExponent) == kExponent ? 0.0F : sample;
};

} // namespace

std::expected<std::unique_ptr<RingWriter>, RingFailure> RingWriter::open(const std::string& name,
                                                                         RingAccess access) {
    const mode_t mode = access == RingAccess::owner ? kOwnerOnly : 0666;
    auto descriptor = openLocked(name, mode);
    if (!descriptor) return std::unexpected(descriptor.error());
    (void)::fchmod(descriptor->get(), mode); // best effort: it is already this user's own
    if (const int error = reserve(descriptor->get())) return systemFailure("cannot grow", error);
    void* mapping =
        ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor->get(), 0);
    if (mapping == MAP_FAILED) return systemFailure("cannot map", errno);
    if (!MappingGuard::add(mapping, kSize)) {
        ::munmap(mapping, kSize);
        return failure(RingFailure::Reason::notCreatable, "too many guarded mappings");
    }
    return std::unique_ptr<RingWriter>(new RingWriter(name, descriptor->release(), mapping));
}

RingWriter::RingWriter(std::string name, int descriptor, void* mapping)
    : name_(std::move(name)), descriptor_(descriptor), mapping_(mapping),
      header_(static_cast<RingHeader*>(mapping)),
      samples_(reinterpret_cast<float*>(static_cast<char*>(mapping) + kRingHeaderSize)) {
    writeIndex_ = loadShared(header_->writeIndex);
    if (writeIndex_ > kLargestIndex) {
        writeIndex_ = 0;
        storeShared(header_->writeIndex, writeIndex_);
    }
}

RingWriter::~RingWriter() {
    MappingGuard::remove(mapping_);
    ::munmap(mapping_, kSize);
    ::close(descriptor_);
}

bool RingWriter::isPublished(std::uint32_t sampleRate) const {
    return loadShared(header_->sampleRate) == sampleRate &&
           loadShared(header_->channelCount) == kChannels &&
           loadShared(header_->capacity) == kCapacity;
}

void RingWriter::publish(std::uint32_t sampleRate) {
    sampleRate_ = sampleRate;
    if (!isPublished(sampleRate)) {
        // Not ready while the fields contradict each other.
        storeShared(header_->capacity, std::uint32_t{0});
        storeShared(header_->sampleRate, sampleRate);
        storeShared(header_->channelCount, kChannels);
        storeShared(header_->capacity, kCapacity);
    }
    (void)::futimens(descriptor_, nullptr); // only a hint: readers also look by themselves
}

void RingWriter::write(const float* samples, std::size_t frames) noexcept HALVO_REALTIME {
    // The header is any process's to scribble on: nothing here depends on it.
    const std::uint64_t end = writeIndex_ + frames;
    const std::size_t kept = std::min<std::size_t>(frames, kCapacity);
    const float* source = samples + (frames - kept) * kChannels;
    const auto position = static_cast<std::size_t>((end - kept) % kCapacity);
    const std::size_t untilWrap = std::min<std::size_t>(kept, kCapacity - position);
    std::transform(source, source + untilWrap * kChannels, samples_ + position * kChannels,
                   finiteOrZero);
    std::transform(source + untilWrap * kChannels, source + kept * kChannels, samples_,
                   finiteOrZero);
    writeIndex_ = end;
    storeShared(header_->writeIndex, end);
}

BacklogLimiter::Indices RingWriter::indices() const noexcept HALVO_REALTIME {
    return {writeIndex_, loadShared(header_->readIndex)};
}

bool RingWriter::isCurrent() const {
    struct stat status{};
    return isNamed(name_, descriptor_) && ::fstat(descriptor_, &status) == 0 &&
           status.st_size >= static_cast<off_t>(kSize) &&
           (sampleRate_ == 0 || isPublished(sampleRate_)) && !MappingGuard::isLost(mapping_);
}

} // namespace halvo::driver
