#include "render/WavWriter.h"

#include "render/SampleCoding.h"
#include "render/WavReader.h"

#include <cerrno>
#include <utility>

namespace halvo::render {

std::expected<WavWriter, std::string> WavWriter::create(const std::string& path,
                                                        const WavReader& like, bool writeFloat) {
    auto pending = AtomicFile::create(path);
    if (!pending) return std::unexpected(pending.error());
    SF_INFO info{};
    info.samplerate = like.sampleRate();
    info.channels = like.channels();
    info.format = outputFormatFor(like.format(), writeFloat, like.frameCount() * like.channels());
    auto output = std::make_unique<CheckedOutput>(pending->descriptor());
    SoundFileHandle file(output->open(info));
    if (!file) {
        if (output->error() != 0) return std::unexpected(cannotWrite(path, output->error()));
        return std::unexpected("cannot write " + path + " in the input's format (" +
                               sf_strerror(nullptr) + "); try --float");
    }
    // The peak chunk holds the time of writing: the same input would give different files.
    (void)sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    for (const auto& [kind, text] : like.texts())
        (void)sf_set_string(file.get(), kind, text.c_str()); // a missing title is no error
    return WavWriter(path, std::move(*pending), std::move(output), std::move(file), info);
}

WavWriter::WavWriter(std::string path, AtomicFile pending, std::unique_ptr<CheckedOutput> output,
                     SoundFileHandle file, const SF_INFO& info)
    : path_(std::move(path)), pending_(std::move(pending)), output_(std::move(output)),
      file_(std::move(file)), info_(info) {}

std::optional<std::string> WavWriter::write(float* frames, std::int64_t frameCount) {
    if (info_.channels == 1) {
        for (std::int64_t frame = 0; frame < frameCount; ++frame)
            frames[frame] = frames[2 * frame];
    }
    const std::int64_t count = frameCount * info_.channels;
    std::int64_t written = 0;
    switch (carrierOf(info_.format)) {
    case Carrier::shorts:
        shorts_.resize(static_cast<std::size_t>(count));
        encode(frames, shorts_.data(), count);
        written = sf_write_short(file_.get(), shorts_.data(), count);
        break;
    case Carrier::integers:
        integers_.resize(static_cast<std::size_t>(count));
        encode(frames, integers_.data(), count, integerBitsOf(info_.format));
        written = sf_write_int(file_.get(), integers_.data(), count);
        break;
    case Carrier::floats:
        written = sf_write_float(file_.get(), frames, count);
        break;
    }
    return written == count ? std::nullopt : std::optional(failure());
}

std::optional<std::string> WavWriter::finish(AtomicFile::Existing existing) {
    if (sf_close(file_.release()) != 0 || output_->error() != 0) return failure();
    return pending_.commit(existing);
}

std::string WavWriter::failure() const {
    return cannotWrite(path_, output_->error() != 0 ? output_->error() : EIO);
}

} // namespace halvo::render
