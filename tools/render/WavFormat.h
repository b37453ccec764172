#pragma once

#include <cstdint>
#include <memory>
#include <sndfile.h>

namespace halvo::render {

struct CloseSoundFile {
    void operator()(SNDFILE* file) const { (void)sf_close(file); } // its result says nothing of use
};
/// Closes the library's handle; the descriptor belongs to another object.
using SoundFileHandle = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// How samples are best exchanged with the library for a file's encoding.
enum class Carrier {
    shorts,   ///< 16 bits, and what is compressed from 16
    integers, ///< 8, 24 and 32 bits, shifted up to 32
    floats
};

Carrier carrierOf(int format);
/// Of an encoding that is carried by integers.
int integerBitsOf(int format);

/// The format to write for an input of `inputFormat`: the same container and encoding, or 32-bit
/// floats. Sound that is too long for the container's 32-bit lengths goes into RF64.
int outputFormatFor(int inputFormat, bool writeFloat, std::int64_t sampleCount);

/// Whether the format is some kind of WAV.
bool isWav(int format);

} // namespace halvo::render
