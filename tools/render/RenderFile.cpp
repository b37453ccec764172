#include "render/RenderFile.h"

#include "base/NumberText.h"
#include "render/OfflineEqualizer.h"
#include "render/Options.h"
#include "render/SampleCoding.h"
#include "render/WavReader.h"
#include "render/WavWriter.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <vector>

namespace halvo::render {

namespace {

namespace fs = std::filesystem;
using Failure = std::optional<std::string>; ///< a sentence

constexpr std::int64_t kBlockFrames = 16384; // few calls of the system

/// Why the output must not be written; nothing when it may be.
Failure objectionTo(const Options& options) {
    std::error_code error;
    const auto status = fs::status(options.output, error);
    if (!fs::exists(status)) return std::nullopt;
    if (fs::is_directory(status)) return options.output + " is a folder; name a file in it";
    if (!fs::is_regular_file(status))
        return options.output + " is not a file; name one that can be written";
    if (fs::equivalent(options.input, options.output, error))
        return options.output + " is the input itself; name another file";
    if (!options.force) {
        return options.output + " is there already; name another file, or replace it with --force";
    }
    return std::nullopt;
}

Failure renderBlocks(WavReader& reader, OfflineEqualizer& equalizer, WavWriter& writer,
                     const RenderProgress& progress) {
    std::vector<float> frames(2 * kBlockFrames);
    const std::int64_t total = reader.frameCount();
    for (std::int64_t done = 0; done < total;) {
        if (!progress(done, total)) return "stopped";
        const std::int64_t wanted = std::min(kBlockFrames, total - done);
        const std::int64_t count = reader.read(frames.data(), wanted);
        if (count < wanted) return "the input ended early or cannot be read any further";
        equalizer.process(frames.data(), count);
        if (auto failure = writer.write(frames.data(), count)) return failure;
        done += count;
    }
    return progress(total, total) ? std::nullopt : Failure("stopped");
}

} // namespace

std::expected<RenderReport, std::string> renderFile(const Options& options, const EQPreset& preset,
                                                    const RenderProgress& progress) {
    auto reader =
        WavReader::open(options.input, options.acceptTruncated ? WavReader::Truncated::accept
                                                               : WavReader::Truncated::refuse);
    if (!reader) return std::unexpected(reader.error());
    if (auto failure = objectionTo(options)) return std::unexpected(*failure);
    if (!options.bypass) {
        const auto possible = OfflineEqualizer::check(preset, reader->sampleRate());
        if (!possible) {
            return std::unexpected("cannot render " + options.input + ": " + possible.error());
        }
    }
    auto writer = WavWriter::create(options.output, *reader, options.writeFloat);
    if (!writer) return std::unexpected(writer.error());

    OfflineEqualizer equalizer(preset, reader->sampleRate(), options.bypass);
    auto failure = renderBlocks(*reader, equalizer, *writer, progress);
    using Existing = AtomicFile::Existing;
    if (!failure) failure = writer->finish(options.force ? Existing::replace : Existing::keep);
    if (failure) return std::unexpected(*failure);
    return RenderReport{.samples = reader->frameCount() * reader->channels(),
                        .clipped = equalizer.clippedSamples() / (reader->channels() == 1 ? 2 : 1),
                        .peak = equalizer.peak(),
                        .notFinite = reader->notFiniteSamples() + equalizer.notFiniteSamples()};
}

std::string RenderReport::remarks() const {
    std::string text;
    if (clipped > 0) {
        const float over = std::ceil(200.0F * std::log10(peak)) / 10.0F; // tenths of a dB, up
        text += std::to_string(clipped) + " of " + std::to_string(samples) +
                " samples were clipped; the loudest was " + numberText(over) +
                " dB beyond full scale, so that much less --preamp avoids it\n";
    }
    if (notFinite > 0) {
        text += std::to_string(notFinite) + " samples were not finite numbers and became silence\n";
    }
    return text;
}

} // namespace halvo::render
