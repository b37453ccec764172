#pragma once

#include "platform/RingLayout.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace halvo::test {

/// Observes a ring without being its reader: reads the header and collects the frames that are
/// written after opening it.
class RingFollower {
  public:
    explicit RingFollower(std::string name) : name_(std::move(name)) {}
    ~RingFollower() { close(); }
    RingFollower(const RingFollower&) = delete;
    RingFollower& operator=(const RingFollower&) = delete;

    /// Opens the current object of that name; false while there is no complete ring.
    bool open();
    void close();
    bool isReady() const;
    std::uint64_t writeIndex() const;
    std::uint32_t sampleRate() const;
    /// Identifies the object, not its name.
    std::uint64_t inode() const;

    /// Collects new frames. If called too rarely, the writer overtakes it and `overtaken` frames
    /// are lost.
    void gather();
    const std::vector<float>& samples() const { return samples_; }
    std::uint64_t overtaken() const { return overtaken_; }
    void clear() { samples_.clear(); }

  private:
    std::string name_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
    const RingHeader* header_ = nullptr;
    std::uint64_t next_ = 0;
    std::uint64_t overtaken_ = 0;
    std::vector<float> samples_;
};

} // namespace halvo::test
