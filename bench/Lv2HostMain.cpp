#include "Lv2Plugin.h"

#include <sndfile.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using halvo::bench::Lv2Plugin;
using halvo::bench::Lv2Request;

constexpr const char* kUsage =
    "usage: halvo-lv2-host [--null] INPUT OUTPUT URI [SYMBOL=VALUE ...] [+ URI ...] ...\n"
    "Runs a stereo sound file through LV2 effects, one after the other.\n"
    "  --null  load the effects but leave the sound as it is\n";

// What the effects get at once, in frames: smaller blocks cost them more, larger ones no less.
constexpr std::uint32_t kBlock = 4096;

struct Job {
    bool isNull = false;
    std::string input;
    std::string output;
    std::vector<Lv2Request> effects;
};

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, Close>;

/// One block of two channels.
struct Planes {
    std::array<std::vector<float>, 2> samples{std::vector<float>(kBlock),
                                              std::vector<float>(kBlock)};
    std::array<float*, 2> pointers{samples[0].data(), samples[1].data()};
};

bool addControl(Lv2Request& request, std::string_view word) {
    const auto equals = word.find('=');
    if (equals == std::string_view::npos) return false;
    const std::string number(word.substr(equals + 1));
    char* end = nullptr;
    const float value = std::strtof(number.c_str(), &end);
    request.controls.emplace_back(word.substr(0, equals), value);
    return !number.empty() && *end == '\0';
}

std::optional<Job> parse(std::span<char*> words) {
    Job job;
    job.isNull = !words.empty() && std::string_view(words[0]) == "--null";
    if (job.isNull) words = words.subspan(1);
    if (words.size() < 3) return std::nullopt;
    job.input = words[0];
    job.output = words[1];
    bool isAddress = true;
    for (const std::string_view word : words.subspan(2)) {
        if (isAddress)
            job.effects.push_back({std::string(word), {}});
        else if (word != "+" && !addControl(job.effects.back(), word))
            return std::nullopt;
        isAddress = word == "+";
    }
    return job;
}

/// Sends one block through all effects; the result is in `block`.
void filter(std::span<const std::unique_ptr<Lv2Plugin>> effects, Planes& block, Planes& spare,
            std::uint32_t frames) {
    for (const auto& effect : effects) {
        effect->run(block.pointers.data(), spare.pointers.data(), frames);
        std::swap(block, spare);
    }
}

void filterFile(std::span<const std::unique_ptr<Lv2Plugin>> effects, SNDFILE* in, SNDFILE* out) {
    std::vector<float> frames(std::size_t{kBlock} * 2);
    Planes block;
    Planes spare;
    while (const sf_count_t count = sf_readf_float(in, frames.data(), kBlock)) {
        const auto length = static_cast<std::uint32_t>(count);
        for (std::size_t frame = 0; frame < length; ++frame)
            for (std::size_t channel = 0; channel < 2; ++channel)
                block.pointers[channel][frame] = frames[frame * 2 + channel];
        filter(effects, block, spare, length);
        for (std::size_t frame = 0; frame < length; ++frame)
            for (std::size_t channel = 0; channel < 2; ++channel)
                frames[frame * 2 + channel] = block.pointers[channel][frame];
        sf_writef_float(out, frames.data(), count);
    }
}

int fail(const std::string& sentence) {
    std::fprintf(stderr, "halvo-lv2-host: %s\n", sentence.c_str());
    return EXIT_FAILURE;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const auto job =
        parse(std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1));
    if (!job) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    SF_INFO format{};
    const SoundFile in(sf_open(job->input.c_str(), SFM_READ, &format));
    if (!in || format.channels != 2) return fail(job->input + " is no stereo sound file");
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    const SoundFile out(sf_open(job->output.c_str(), SFM_WRITE, &format));
    if (!out) return fail("cannot write " + job->output);

    std::vector<std::unique_ptr<Lv2Plugin>> effects;
    for (const Lv2Request& request : job->effects) {
        auto effect = Lv2Plugin::load(request, format.samplerate, kBlock);
        if (!effect) return fail(effect.error());
        effects.push_back(std::move(*effect));
    }
    if (job->isNull) effects.clear();
    filterFile(effects, in.get(), out.get());
    return sf_error(out.get()) == SF_ERR_NO_ERROR ? EXIT_SUCCESS
                                                  : fail(job->output + " is not complete");
}
