#pragma once

#include "posix/AtomicFile.h"
#include "render/CheckedOutput.h"
#include "render/WavFormat.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo::render {

class WavReader;

/// A mono or stereo WAV file, written from stereo blocks. It appears under its name when `finish`
/// succeeds; until then whatever was there before stays.
class WavWriter {
  public:
    /// For the length, rate, channels, texts and, unless floats are wanted, the format of `like`.
    /// The error is a sentence that says what to do.
    static std::expected<WavWriter, std::string> create(const std::string& path,
                                                        const WavReader& like, bool writeFloat);

    /// Writes stereo frames and may change them; a mono file gets the left channel.
    /// Gives nothing when it worked, else a sentence.
    std::optional<std::string> write(float* frames, std::int64_t frameCount);

    /// Completes the file and puts it in place. As `write`.
    std::optional<std::string> finish(AtomicFile::Existing existing);

  private:
    WavWriter(std::string path, AtomicFile pending, std::unique_ptr<CheckedOutput> output,
              SoundFileHandle file, const SF_INFO& info);
    std::string failure() const;

    std::string path_;
    AtomicFile pending_;
    std::unique_ptr<CheckedOutput> output_; // not moved with this object: the library points at it
    SoundFileHandle file_;                  // destroyed before the two that it uses
    SF_INFO info_;
    std::vector<std::int16_t> shorts_;
    std::vector<std::int32_t> integers_;
};

} // namespace halvo::render
