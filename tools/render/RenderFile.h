#pragma once

#include "base/EQPreset.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <string>

namespace halvo::render {

struct Options;

/// What happened to a file.
struct RenderReport {
    std::int64_t samples = 0;   ///< of all channels
    std::int64_t clipped = 0;   ///< changed by the soft clip
    float peak = 0;             ///< largest magnitude ahead of the clip; 1 is full scale
    std::int64_t notFinite = 0; ///< samples that became silence

    /// Sentences about what the user should know; empty when all is well.
    std::string remarks() const;
};

/// Called with the frames done and the total; return false to stop.
using RenderProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Renders the input to the output, block by block. The error is a sentence that says what to do.
/// After an error or a stop the output is as it was before.
std::expected<RenderReport, std::string> renderFile(const Options& options, const EQPreset& preset,
                                                    const RenderProgress& progress);

} // namespace halvo::render
