#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace halvo::bench {

/// What to load, and what its control ports are set to: symbol and value.
struct Lv2Request {
    std::string uri;
    std::vector<std::pair<std::string, float>> controls;
};

/// A running LV2 effect with two audio inputs and two audio outputs. One thread.
class Lv2Plugin {
  public:
    /// Controls that are not named keep their default; else a sentence about what is wrong.
    /// `largestBlock` in frames.
    static std::expected<std::unique_ptr<Lv2Plugin>, std::string>
    load(const Lv2Request& request, double sampleRate, std::uint32_t largestBlock);
    ~Lv2Plugin();
    Lv2Plugin(const Lv2Plugin&) = delete;
    Lv2Plugin& operator=(const Lv2Plugin&) = delete;

    /// Filters `frames` frames of the channels `in` into the channels `out`, two each. The buffers
    /// must not overlap.
    void run(float* const* in, float* const* out, std::uint32_t frames);

  private:
    struct Parts;
    explicit Lv2Plugin(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

} // namespace halvo::bench
