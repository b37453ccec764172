#include "audio/BiquadCascade.h"

#include "base/CheckedArithmetic.h"

#include <cmath>
#include <cstring>

// A plain loop waits: a section needs the one before it, and each sample the sample before it. So
// the work is skewed. At step t section k filters frame t − k; then the ten sections of one step
// do not depend on each other, only on the step before, and run side by side:
//
//     step 9 :  section 0 has frame 9, section 1 has frame 8, …, section 9 has frame 0
//     step 10:  section 0 has frame 10, section 1 has frame 9, …, section 9 has frame 1
//
// Row j of the five vectors holds left and right of section j and left and right of section j + 5.
// What row j − 1 put out in the step before is, as it lies there, the input of row j. Row 0 takes
// the new frame and section 4's output; row 4 puts out the finished frame. Rows go in descending
// order, so that each finds the output of the step before still in place. The triangle of frames at
// either end, where not all sections have one, goes through the sections one by one.

namespace halvo {

namespace {

using Vector = float __attribute__((vector_size(16)));

constexpr std::size_t kRows = kBandCount / 2;
/// Frames on their way through the sections at any step but the first and last ones.
constexpr std::int64_t kSkew = kBandCount - 1;

} // namespace

void BiquadCascade::process(float* frames, std::int64_t frameCount,
                            const Coefficients& coefficients) noexcept HALVO_REALTIME {
    (void)checkedMultiply<std::int64_t>(checkedCount(frameCount), 2);
    if (frameCount > kSkew) {
        processWavefront(frames, frameCount, coefficients);
    } else {
        for (std::int64_t frame = 0; frame < frameCount; ++frame) {
            passThrough(frames + 2 * frame, 0, kBandCount, coefficients);
        }
    }
    heal();
}

void BiquadCascade::passThrough(float* frame, std::size_t first, std::size_t last,
                                const Coefficients& coefficients) noexcept HALVO_REALTIME {
    for (std::size_t channel = 0; channel < 2; ++channel) {
        float x = frame[channel];
        for (std::size_t section = first; section < last; ++section) {
            const auto& c = coefficients[section];
            float& z1 = memory_[section].z1[channel];
            float& z2 = memory_[section].z2[channel];
            const float y = c.b0 * x + z1;
            z1 = c.b1 * x - c.a1 * y + z2;
            z2 = c.b2 * x - c.a2 * y;
            x = y;
        }
        frame[channel] = x;
    }
}

void BiquadCascade::processWavefront(float* frames, std::int64_t frameCount,
                                     const Coefficients& coefficients) noexcept HALVO_REALTIME {
    // The leading triangle: frame n gets as far as section 8 − n.
    for (std::int64_t frame = 0; frame < kSkew; ++frame) {
        passThrough(frames + 2 * frame, 0, static_cast<std::size_t>(kSkew - frame), coefficients);
    }

    Vector b0[kRows], b1[kRows], b2[kRows], a1[kRows], a2[kRows], z1[kRows], z2[kRows], y[kRows];
    for (std::size_t row = 0; row < kRows; ++row) {
        const auto& low = coefficients[row];
        const auto& high = coefficients[row + kRows];
        b0[row] = Vector{low.b0, low.b0, high.b0, high.b0};
        b1[row] = Vector{low.b1, low.b1, high.b1, high.b1};
        b2[row] = Vector{low.b2, low.b2, high.b2, high.b2};
        a1[row] = Vector{low.a1, low.a1, high.a1, high.a1};
        a2[row] = Vector{low.a2, low.a2, high.a2, high.a2};
        const auto& lowMemory = memory_[row];
        const auto& highMemory = memory_[row + kRows];
        z1[row] = Vector{lowMemory.z1[0], lowMemory.z1[1], highMemory.z1[0], highMemory.z1[1]};
        z2[row] = Vector{lowMemory.z2[0], lowMemory.z2[1], highMemory.z2[0], highMemory.z2[1]};
        // Section k's latest output is frame 8 − k, still in its place. Section 9 has none yet.
        const float* const lowFrame = frames + 2 * (kSkew - 1 - static_cast<std::int64_t>(row));
        const float* const highFrame = row + 1 < kRows ? lowFrame - 2 * kRows : lowFrame;
        y[row] = Vector{lowFrame[0], lowFrame[1], highFrame[0], highFrame[1]};
    }

    for (std::int64_t frame = kSkew; frame < frameCount; ++frame) {
        const float* const in = frames + 2 * frame;
        const Vector carried = y[kRows - 1];
        for (std::size_t row = kRows; row-- > 0;) {
            const Vector x = row > 0 ? y[row - 1] : Vector{in[0], in[1], carried[0], carried[1]};
            y[row] = b0[row] * x + z1[row];
            z1[row] = b1[row] * x - a1[row] * y[row] + z2[row];
            z2[row] = b2[row] * x - a2[row] * y[row];
        }
        std::memcpy(frames + 2 * (frame - kSkew), reinterpret_cast<const char*>(&y[kRows - 1]) + 8,
                    2 * sizeof(float));
    }

    for (std::size_t row = 0; row < kRows; ++row) {
        for (std::size_t lane = 0; lane < 2; ++lane) {
            memory_[row].z1[lane] = z1[row][lane];
            memory_[row].z2[lane] = z2[row][lane];
            memory_[row + kRows].z1[lane] = z1[row][lane + 2];
            memory_[row + kRows].z2[lane] = z2[row][lane + 2];
        }
        // Sections 0 … 8 hold frames that have not reached the end.
        float* const lowFrame = frames + 2 * (frameCount - 1 - static_cast<std::int64_t>(row));
        std::memcpy(lowFrame, &y[row], 2 * sizeof(float));
        if (row + 1 == kRows) continue;
        std::memcpy(lowFrame - 2 * kRows, reinterpret_cast<const char*>(&y[row]) + 8,
                    2 * sizeof(float));
    }
    // The trailing triangle: the last frame has left section 0 only.
    for (std::int64_t frame = frameCount - kSkew; frame < frameCount; ++frame) {
        passThrough(frames + 2 * frame, static_cast<std::size_t>(frameCount - frame), kBandCount,
                    coefficients);
    }
}

/// A sample that is not finite would stay in the feedback for ever.
void BiquadCascade::heal() noexcept HALVO_REALTIME {
    for (auto& [z1, z2] : memory_) {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            if (!std::isfinite(z1[channel])) z1[channel] = 0;
            if (!std::isfinite(z2[channel])) z2[channel] = 0;
        }
    }
}

} // namespace halvo
