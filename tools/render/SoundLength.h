#pragma once

#include <cstdint>
#include <optional>

namespace halvo::render {

/// What a WAV file's header says about its sound, and what there is, in bytes.
struct SoundLength {
    std::int64_t promised = 0;
    std::int64_t present = 0;

    bool isComplete() const { return present >= promised; }
};

/// Reads the headers of an open file, without moving its position. Nothing when there is no sound,
/// or its length was never known because the file was written to a pipe.
std::optional<SoundLength> soundLength(int descriptor);

} // namespace halvo::render
