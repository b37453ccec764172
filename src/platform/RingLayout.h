#pragma once

#include <cstddef>
#include <cstdint>

namespace halvo {

/// The name of the shared-memory object with the virtual device's sound.
constexpr const char* kRingName = "/halvo_audio_ring";

/// The start of the shared object, little-endian; interleaved 32-bit float samples follow it. Frame
/// f stands at float index (f mod capacity) × channels. Both indices only grow.
struct RingHeader {
    std::uint64_t writeIndex;    ///< frames ever written; the driver's
    std::uint64_t readIndex;     ///< frames ever consumed; the reader's
    std::uint32_t driverWord;    ///< the driver's own business
    std::uint32_t sampleRate;    ///< frames per second
    std::uint32_t channelCount;  ///< samples per frame
    std::uint32_t capacity;      ///< frames that the ring holds; 0 = not ready
    std::uint64_t driverReserve; ///< the driver's own business
};

static_assert(sizeof(RingHeader) == 40);
static_assert(offsetof(RingHeader, writeIndex) == 0);
static_assert(offsetof(RingHeader, readIndex) == 8);
static_assert(offsetof(RingHeader, driverWord) == 16);
static_assert(offsetof(RingHeader, sampleRate) == 20);
static_assert(offsetof(RingHeader, channelCount) == 24);
static_assert(offsetof(RingHeader, capacity) == 28);
static_assert(offsetof(RingHeader, driverReserve) == 32);

constexpr std::size_t kRingHeaderSize = sizeof(RingHeader);

/// A word of the header that two processes share. Compiler atomics, because the binary layout is
/// fixed; acquire pairs with release, so the samples are visible before their index. Any thread,
/// real-time safe.
template <typename Word> Word loadShared(const Word& word) noexcept {
    static_assert(__atomic_always_lock_free(sizeof(Word), nullptr));
    return __atomic_load_n(&word, __ATOMIC_ACQUIRE);
}
template <typename Word> void storeShared(Word& word, Word value) noexcept {
    static_assert(__atomic_always_lock_free(sizeof(Word), nullptr));
    __atomic_store_n(&word, value, __ATOMIC_RELEASE);
}

} // namespace halvo
