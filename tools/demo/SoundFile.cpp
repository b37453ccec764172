#include "SoundFile.h"

#include <sndfile.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include <unistd.h>

namespace halvo::demo {
namespace {

std::string temporaryName(const std::string& path) {
    return path + ".part" + std::to_string(::getpid());
}

std::optional<std::string> putInPlace(const std::string& temporary, const std::string& path) {
    if (std::rename(temporary.c_str(), path.c_str()) == 0) return std::nullopt;
    const std::string reason = std::strerror(errno);
    std::remove(temporary.c_str());
    return "cannot write " + path + ": " + reason;
}

std::string abandon(const std::string& temporary, const std::string& path,
                    const std::string& reason) {
    std::remove(temporary.c_str());
    return "cannot write " + path + ": " + reason;
}

} // namespace

std::optional<std::string> writeSoundFile(const std::string& path, const StereoSound& sound) {
    const std::string temporary = temporaryName(path);
    SF_INFO format{};
    format.samplerate = kSampleRate;
    format.channels = 2;
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(temporary.c_str(), SFM_WRITE, &format);
    if (file == nullptr) return abandon(temporary, path, sf_strerror(nullptr));
    const auto count = static_cast<sf_count_t>(sound.frameCount());
    const bool complete = sf_writef_float(file, sound.samples.data(), count) == count;
    if (sf_close(file) != 0 || !complete) return abandon(temporary, path, "the disk may be full");
    return putInPlace(temporary, path);
}

std::optional<std::string> writeTextFile(const std::string& path, const std::string& text) {
    const std::string temporary = temporaryName(path);
    std::ofstream file(temporary, std::ios::binary);
    file << text;
    file.close();
    if (!file) return abandon(temporary, path, std::strerror(errno));
    return putInPlace(temporary, path);
}

} // namespace halvo::demo
