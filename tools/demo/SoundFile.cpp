#include "SoundFile.h"

#include "posix/AtomicFile.h"
#include "posix/FileDescriptor.h"

#include <sndfile.h>

#include <cerrno>

namespace halvo::demo {

std::optional<std::string> writeSoundFile(const std::string& path, const StereoSound& sound) {
    auto pending = AtomicFile::create(path);
    if (!pending) return pending.error();
    SF_INFO format{};
    format.samplerate = kSampleRate;
    format.channels = 2;
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open_fd(pending->descriptor(), SFM_WRITE, &format, SF_FALSE);
    if (file == nullptr) return "cannot write " + path + ": " + sf_strerror(nullptr);
    const auto count = static_cast<sf_count_t>(sound.frameCount());
    const bool complete = sf_writef_float(file, sound.samples.data(), count) == count;
    if (sf_close(file) != 0 || !complete) return cannotWrite(path, ENOSPC);
    return pending->commit(AtomicFile::Existing::replace);
}

std::optional<std::string> writeTextFile(const std::string& path, const std::string& text) {
    auto pending = AtomicFile::create(path);
    if (!pending) return pending.error();
    if (!writeAll(pending->descriptor(), text)) return cannotWrite(path, errno);
    return pending->commit(AtomicFile::Existing::replace);
}

} // namespace halvo::demo
