#include "SoundFile.h"

#include "support/PendingFile.h"

#include <sndfile.h>

#include <cerrno>
#include <string_view>
#include <unistd.h>

namespace halvo::demo {

using tools::PendingFile;

std::optional<std::string> writeSoundFile(const std::string& path, const StereoSound& sound) {
    auto pending = PendingFile::create(path);
    if (!pending) return pending.error();
    SF_INFO format{};
    format.samplerate = kSampleRate;
    format.channels = 2;
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open_fd(pending->descriptor(), SFM_WRITE, &format, SF_FALSE);
    if (file == nullptr) return "cannot write " + path + ": " + sf_strerror(nullptr);
    const auto count = static_cast<sf_count_t>(sound.frameCount());
    const bool complete = sf_writef_float(file, sound.samples.data(), count) == count;
    if (sf_close(file) != 0 || !complete) return tools::cannotWrite(path, ENOSPC);
    return pending->commit(PendingFile::Existing::replace);
}

std::optional<std::string> writeTextFile(const std::string& path, const std::string& text) {
    auto pending = PendingFile::create(path);
    if (!pending) return pending.error();
    for (std::string_view rest = text; !rest.empty();) {
        const auto count = ::write(pending->descriptor(), rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return tools::cannotWrite(path, errno);
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    return pending->commit(PendingFile::Existing::replace);
}

} // namespace halvo::demo
