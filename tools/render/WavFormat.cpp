#include "render/WavFormat.h"

namespace halvo::render {

namespace {

constexpr std::int64_t kRoomForHeaders = 1 << 20;

int bytesPerSample(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_DOUBLE:
        return 8;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        return 4;
    case SF_FORMAT_PCM_24:
        return 3;
    case SF_FORMAT_PCM_16:
        return 2;
    default:
        return 1;
    }
}

} // namespace

Carrier carrierOf(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
        return Carrier::floats;
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_PCM_32:
        return Carrier::integers;
    default:
        return Carrier::shorts;
    }
}

int integerBitsOf(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_U8:
        return 8;
    case SF_FORMAT_PCM_24:
        return 24;
    default:
        return 32;
    }
}

int outputFormatFor(int inputFormat, bool writeFloat, std::int64_t sampleCount) {
    int container = inputFormat & SF_FORMAT_TYPEMASK;
    const int encoding = writeFloat ? SF_FORMAT_FLOAT : inputFormat & SF_FORMAT_SUBMASK;
    const std::int64_t bytes = sampleCount * bytesPerSample(encoding);
    if (bytes > INT64_C(0xFFFFFFFF) - kRoomForHeaders) container = SF_FORMAT_RF64;
    return container | encoding;
}

bool isWav(int format) {
    const int container = format & SF_FORMAT_TYPEMASK;
    return container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX ||
           container == SF_FORMAT_RF64;
}

} // namespace halvo::render
