#include "render/WavReader.h"

#include "render/SampleCoding.h"
#include "render/SoundLength.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::render {

namespace {

/// What speaks against a file before its contents are looked at; empty if nothing does.
std::string objectionTo(const FileDescriptor& descriptor) {
    struct stat status{};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0) return std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return "it is a folder; name a file in it";
    if (!S_ISREG(status.st_mode)) return "it is not a file; save it to one first";
    if (status.st_size == 0) return "it is empty";
    return "";
}

std::string containerName(int format) {
    SF_FORMAT_INFO info{};
    info.format = format & SF_FORMAT_TYPEMASK;
    const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0;
    return known && info.name != nullptr ? info.name : "something else";
}

/// What speaks against sound that could be opened; empty if nothing does.
std::string objectionTo(const SF_INFO& info) {
    if (!isWav(info.format)) {
        return "it is not WAV but " + containerName(info.format) + "; convert it to WAV first";
    }
    if (info.channels > 2) {
        return "it has " + std::to_string(info.channels) +
               " channels, and the equalizer is for one or two; mix it down first";
    }
    if (info.frames <= 0) return "it holds no sound";
    return "";
}

std::string cutShort(const SoundLength& length, const SF_INFO& info) {
    const auto tenths = info.samplerate > 0 ? info.frames * 10 / info.samplerate : 0;
    const auto percent = length.present * 100 / length.promised;
    return "it is cut short: " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) +
           " s of sound are there, " + std::to_string(percent) +
           " % of what it promises; get a whole copy, or render what there is with --truncated";
}

} // namespace

std::expected<WavReader, std::string> WavReader::open(const std::string& path,
                                                      Truncated truncated) {
    const auto failure = [&path](const std::string& why) {
        return std::unexpected("cannot read " + path + ": " + why);
    };
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (const auto why = objectionTo(descriptor); !why.empty()) return failure(why);
    SF_INFO info{};
    SoundFileHandle file(sf_open_fd(descriptor.get(), SFM_READ, &info, SF_FALSE));
    if (!file) {
        if (sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT)
            return failure("it is not a WAV file; convert it to WAV first");
        return failure(std::string("it is damaged or of an unknown kind (") + sf_strerror(nullptr) +
                       ")");
    }
    const auto length = soundLength(descriptor.get());
    if (isWav(info.format) && length && !length->isComplete() && truncated == Truncated::refuse)
        return failure(cutShort(*length, info));
    if (const auto why = objectionTo(info); !why.empty()) return failure(why);
    return WavReader(std::move(descriptor), std::move(file), info);
}

WavReader::WavReader(FileDescriptor descriptor, SoundFileHandle file, const SF_INFO& info)
    : descriptor_(std::move(descriptor)), file_(std::move(file)), info_(info) {}

std::vector<std::pair<int, std::string>> WavReader::texts() const {
    constexpr std::array kKept{SF_STR_TITLE, SF_STR_COPYRIGHT, SF_STR_ARTIST, SF_STR_COMMENT,
                               SF_STR_DATE,  SF_STR_ALBUM,     SF_STR_GENRE,  SF_STR_TRACKNUMBER};
    std::vector<std::pair<int, std::string>> texts;
    for (const int kind : kKept) {
        if (const char* text = sf_get_string(file_.get(), kind)) texts.emplace_back(kind, text);
    }
    return texts;
}

std::int64_t WavReader::read(float* frames, std::int64_t frameCount) {
    const std::int64_t wanted = frameCount * info_.channels;
    std::int64_t count = 0; // samples
    switch (carrierOf(info_.format)) {
    case Carrier::shorts:
        shorts_.resize(static_cast<std::size_t>(wanted));
        count = sf_read_short(file_.get(), shorts_.data(), wanted);
        decode(shorts_.data(), frames, count);
        break;
    case Carrier::integers:
        integers_.resize(static_cast<std::size_t>(wanted));
        count = sf_read_int(file_.get(), integers_.data(), wanted);
        decode(integers_.data(), frames, count);
        break;
    case Carrier::floats:
        count = sf_read_float(file_.get(), frames, wanted);
        notFinite_ += silenceNotFinite(frames, count);
        break;
    }
    if (info_.channels == 2) return count / 2;
    for (std::int64_t frame = count; frame-- > 0;)
        frames[2 * frame] = frames[2 * frame + 1] = frames[frame];
    return count;
}

} // namespace halvo::render
