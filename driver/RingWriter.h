#pragma once

#include "base/Realtime.h"
#include "driver/BacklogLimiter.h"
#include "platform/RingLayout.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>

namespace halvo::driver {

/// Why the ring could not be opened.
struct RingFailure {
    enum class Reason { alreadyRunning, notCreatable };
    Reason reason;
    std::string detail; ///< for a person
};

/// Who may open the ring beside its writer.
enum class RingAccess {
    owner,    ///< programs of the same user
    everybody ///< for a writer that runs as a user of the system's own
};

/// The writer's side of the shared ring: the one process that holds the object's lock. Everything
/// but `write` on the main thread; `write` on the audio thread.
class RingWriter {
  public:
    static constexpr std::uint32_t kChannels = 2;
    /// Twice what a sound server's longest cycle asks for.
    static constexpr std::uint32_t kCapacity = 16384;

    /// Creates the object, or adopts the one that an earlier driver left: counters go on, the size
    /// never shrinks. A new object is not ready before `publish`.
    static std::expected<std::unique_ptr<RingWriter>, RingFailure>
    open(const std::string& name, RingAccess access = RingAccess::owner);
    /// Leaves the object behind: a reader keeps its mapping.
    ~RingWriter();
    RingWriter(const RingWriter&) = delete;
    RingWriter& operator=(const RingWriter&) = delete;

    /// Says what the samples are and makes readers look again. May run while `write` does.
    void publish(std::uint32_t sampleRate);

    /// Appends interleaved stereo frames; samples that are not finite become 0, because a single
    /// one would stay in a reader's filters for ever. Audio thread, one at a time.
    void write(const float* samples, std::size_t frames) noexcept HALVO_REALTIME;

    /// How far writer and reader are. Audio thread.
    BacklogLimiter::Indices indices() const noexcept HALVO_REALTIME;

    /// Whether the mapping is still the object that the name stands for, whole and as published.
    bool isCurrent() const;
    const std::string& name() const { return name_; }

  private:
    RingWriter(std::string name, int descriptor, void* mapping);
    bool isPublished(std::uint32_t sampleRate) const;

    const std::string name_;
    const int descriptor_;
    void* const mapping_;
    RingHeader* const header_;
    float* const samples_;
    std::uint32_t sampleRate_ = 0; // main thread only; 0: not published yet
    std::uint64_t writeIndex_ = 0; // audio thread only, after the constructor
};

} // namespace halvo::driver
