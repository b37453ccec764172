#pragma once

#include "posix/FileDescriptor.h"
#include "render/WavFormat.h"

#include <cstdint>
#include <expected>
#include <string>
#include <utility>
#include <vector>

namespace halvo::render {

/// A WAV file of one channel or two, read as stereo in blocks.
class WavReader {
  public:
    enum class Truncated { refuse, accept };

    /// The error is a sentence that says what to do.
    static std::expected<WavReader, std::string> open(const std::string& path, Truncated truncated);

    int sampleRate() const { return info_.samplerate; }
    int channels() const { return info_.channels; }
    int format() const { return info_.format; }
    std::int64_t frameCount() const { return info_.frames; }
    /// Title, artist and the like, by the library's numbers.
    std::vector<std::pair<int, std::string>> texts() const;

    /// Reads `frameCount` stereo frames, fewer at the end or where reading fails; a mono file is
    /// heard on both sides. What is not finite becomes silence.
    std::int64_t read(float* frames, std::int64_t frameCount);
    /// Samples that were not finite.
    std::int64_t notFiniteSamples() const { return notFinite_; }

  private:
    WavReader(FileDescriptor descriptor, SoundFileHandle file, const SF_INFO& info);

    FileDescriptor descriptor_;
    SoundFileHandle file_;
    SF_INFO info_;
    std::vector<std::int16_t> shorts_;
    std::vector<std::int32_t> integers_;
    std::int64_t notFinite_ = 0;
};

} // namespace halvo::render
