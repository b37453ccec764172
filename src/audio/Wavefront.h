#pragma once

#include "audio/BandFrequencies.h"
#include "audio/BiquadCoefficients.h"
#include "audio/WavefrontMemory.h"
#include "base/Realtime.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// A plain loop waits: a section needs the one before it, and each sample the sample before it. So
// the work is skewed. At step t section k filters frame t − k; then the ten sections of one step
// do not depend on each other, only on the step before, and run side by side in vector lanes:
//
//     step  9:  section 0 has frame  9, section 1 has frame 8, …, section 9 has frame 0
//     step 10:  section 0 has frame 10, section 1 has frame 9, …, section 9 has frame 1
//
// A vector is a row of slots, a slot is left and right of one section. Slot s of row r belongs to
// section r + s · rows: what a row put out in the step before is, as it lies there, the next row's
// input. Row 0 takes the new frame and the last row's output, moved up by a slot. Rows go in
// descending order, so that each finds the output of the step before still in place. In the first
// and last steps not every section has a frame: one that has none yet gets its memory when its
// first frame arrives, one that has none left gives it back, and what it computes is not used.

namespace halvo {

/// The cascade for one block of frames, on vectors of the type `Lanes`. Every section's operations
/// are those of the plain loop in the plain loop's order, so the result is the same to the last
/// bit. A new instance for each block; render thread.
template <typename Lanes> class Wavefront {
  public:
    explicit Wavefront(const BiquadCoefficients* coefficients) noexcept HALVO_REALTIME {
        for (std::size_t row = 0; row < kRows; ++row) {
            const auto spread = [&](float BiquadCoefficients::* field) {
                return Lanes::template perSlot<Floats>([&](std::size_t slot) {
                    const std::size_t section = row + slot * kRows;
                    return section < kBandCount ? coefficients[section].*field : 0.0F;
                });
            };
            b0_[row] = spread(&BiquadCoefficients::b0);
            b1_[row] = spread(&BiquadCoefficients::b1);
            b2_[row] = spread(&BiquadCoefficients::b2);
            a1_[row] = spread(&BiquadCoefficients::a1);
            a2_[row] = spread(&BiquadCoefficients::a2);
            section_[row] = Lanes::template perSlot<Integers>(
                [&](std::size_t slot) { return static_cast<std::int32_t>(row + slot * kRows); });
        }
    }

    /// Filters `frameCount` frames in place; 0 changes nothing.
    [[gnu::always_inline]] void process(float* frames, std::int64_t frameCount,
                                        WavefrontMemory& memory) noexcept HALVO_REALTIME {
        if (frameCount == 0) return;
        std::memcpy(memory1_, memory.z1.data(), sizeof memory1_);
        std::memcpy(memory2_, memory.z2.data(), sizeof memory2_);
        const std::int64_t last = frameCount - 1;
        const float silence[2] = {0, 0};
        for (std::int64_t step = 0; step <= last + kSkew; ++step) {
            if (step > kSkew) { // the bulk: every section has a frame
                for (; step < last; ++step) {
                    advance(frames + 2 * step);
                    putOut(frames + 2 * (step - kSkew));
                }
            }
            if (step <= kSkew) admit(static_cast<std::int32_t>(step));
            advance(step <= last ? frames + 2 * step : silence);
            if (step >= last) release(static_cast<std::int32_t>(step - last));
            if (step >= kSkew) putOut(frames + 2 * (step - kSkew));
        }
        std::memcpy(memory.z1.data(), memory1_, sizeof memory1_);
        std::memcpy(memory.z2.data(), memory2_, sizeof memory2_);
    }

  private:
    using Floats = typename Lanes::Floats;
    using Integers = typename Lanes::Integers;
    using Frames = typename Lanes::Frames;
    static constexpr std::size_t kSlots = Lanes::kSlots;
    static constexpr std::size_t kRows = (kBandCount + kSlots - 1) / kSlots;
    /// Steps from a frame's arrival to the step in which it is finished.
    static constexpr std::int64_t kSkew = kBandCount - 1;
    static_assert(sizeof(Floats) * kRows <= sizeof(float) * WavefrontMemory::kLanes);

    /// One step. Compiled into both of its places: only there the state stays in registers.
    [[gnu::always_inline]] void advance(const float* frame) noexcept HALVO_REALTIME {
        double in;
        std::memcpy(&in, frame, sizeof in);
        const auto first =
            reinterpret_cast<Floats>(Lanes::movedUp(reinterpret_cast<Frames>(y_[kRows - 1]), in));
        for (std::size_t row = kRows; row-- > 0;) {
            const Floats x = row > 0 ? y_[row - 1] : first;
            y_[row] = b0_[row] * x + z1_[row];
            z1_[row] = b1_[row] * x - a1_[row] * y_[row] + z2_[row];
            z2_[row] = b2_[row] * x - a2_[row] * y_[row];
        }
    }

    /// Writes the last section's output.
    [[gnu::always_inline]] void putOut(float* frame) const noexcept HALVO_REALTIME {
        const auto row = reinterpret_cast<Frames>(y_[kSkew % kRows]);
        const double out = row[kSkew / kRows];
        std::memcpy(frame, &out, sizeof out);
    }

    [[gnu::always_inline]] void admit(std::int32_t section) noexcept HALVO_REALTIME {
        for (std::size_t row = 0; row < kRows; ++row) {
            z1_[row] = section_[row] == section ? memory1_[row] : z1_[row];
            z2_[row] = section_[row] == section ? memory2_[row] : z2_[row];
        }
    }

    [[gnu::always_inline]] void release(std::int32_t section) noexcept HALVO_REALTIME {
        for (std::size_t row = 0; row < kRows; ++row) {
            memory1_[row] = section_[row] == section ? z1_[row] : memory1_[row];
            memory2_[row] = section_[row] == section ? z2_[row] : memory2_[row];
        }
    }

    Floats b0_[kRows], b1_[kRows], b2_[kRows], a1_[kRows], a2_[kRows];
    Integers section_[kRows];
    Floats y_[kRows]{}, z1_[kRows]{}, z2_[kRows]{};
    Floats memory1_[kRows], memory2_[kRows];
};

} // namespace halvo
