#include "posix/MappingGuard.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

namespace halvo {

namespace {

/// A guarded range; start 0: free, kReserved: being filled in.
struct Range {
    std::atomic<std::uintptr_t> start{0};
    std::atomic<std::size_t> size{0};
    std::atomic<bool> lost{false};
};

constexpr std::uintptr_t kReserved = 1;
constexpr std::size_t kRanges = 32;
static_assert(std::atomic<std::uintptr_t>::is_always_lock_free);

std::array<Range, kRanges> ranges;
struct sigaction previousAction{};

std::uintptr_t addressOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

Range* rangeAround(std::uintptr_t address) noexcept {
    for (Range& range : ranges) {
        const std::uintptr_t start = range.start.load(std::memory_order_acquire);
        if (start > kReserved && address >= start && address - start < range.size) return &range;
    }
    return nullptr;
}

Range* rangeFrom(const void* start) noexcept {
    for (Range& range : ranges) {
        if (range.start.load(std::memory_order_acquire) == addressOf(start)) return &range;
    }
    return nullptr;
}

/// Signal context: only system calls and lock-free atomics.
bool replaceByZeros(const void* address) noexcept {
    Range* range = rangeAround(addressOf(address));
    if (range == nullptr) return false;
    void* start = reinterpret_cast<void*>(range->start.load(std::memory_order_relaxed));
    const int savedError = errno;
    void* mapped = ::mmap(start, range->size, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
    errno = savedError;
    if (mapped == MAP_FAILED) return false;
    range->lost.store(true, std::memory_order_release);
    return true;
}

void onBusError(int number, siginfo_t* information, void* context) {
    // A positive code comes from the processor; a signal that was sent has no faulting address.
    if (information->si_code > 0 && replaceByZeros(information->si_addr)) return;
    if ((previousAction.sa_flags & SA_SIGINFO) != 0) {
        previousAction.sa_sigaction(number, information, context);
    } else if (previousAction.sa_handler != SIG_DFL && previousAction.sa_handler != SIG_IGN) {
        previousAction.sa_handler(number);
    } else {
        // Ends the process when the instruction is repeated or the signal, sent again, arrives.
        ::sigaction(SIGBUS, &previousAction, nullptr);
        if (information->si_code <= 0) (void)::raise(SIGBUS);
    }
}

void installHandler() {
    struct sigaction action{};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    (void)::sigaction(SIGBUS, &action, &previousAction);
}

std::size_t wholePages(std::size_t size) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

} // namespace

bool MappingGuard::add(const void* start, std::size_t size) {
    static std::once_flag once;
    std::call_once(once, installHandler);
    for (Range& range : ranges) {
        std::uintptr_t free = 0;
        if (!range.start.compare_exchange_strong(free, kReserved)) continue;
        range.size.store(wholePages(size));
        range.lost.store(false);
        range.start.store(addressOf(start), std::memory_order_release);
        return true;
    }
    return false;
}

void MappingGuard::remove(const void* start) {
    if (Range* range = rangeFrom(start)) range->start.store(0);
}

bool MappingGuard::isLost(const void* start) noexcept {
    const Range* range = rangeFrom(start);
    return range != nullptr && range->lost.load(std::memory_order_acquire);
}

} // namespace halvo
