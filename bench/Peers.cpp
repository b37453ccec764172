#include "Peers.h"

#include "BenchSound.h"
#include "demo/ExpectedResponse.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace halvo::bench {
namespace {

using Words = Peer::Words;
using demo::kBandFrequencies;

constexpr std::size_t kBands = kBandFrequencies.size();
constexpr const char* kQ = "1.414";

std::string text(const char* format, double value) {
    std::array<char, 32> digits{};
    (void)std::snprintf(digits.data(), digits.size(), format, value); // never that long
    return digits.data();
}

std::string frequency(std::size_t band) {
    return text("%.0f", kBandFrequencies[band]);
}

double gainOf(std::size_t band) {
    return static_cast<double>(presetGains()[band]);
}

std::string decibels(std::size_t band) {
    return text("%g", gainOf(band));
}

std::string amplitude(std::size_t band) {
    return text("%.7f", std::pow(10.0, gainOf(band) / 20));
}

Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

Peer sox() {
    const Words copy{"sox", "--single-threaded", "--no-dither", Peer::kInput, Peer::kOutput};
    Words effects;
    for (std::size_t band = 0; band < kBands; ++band)
        effects =
            effects + Words{"equalizer", frequency(band), std::string(kQ) + "q", decibels(band)};
    return {.name = "sox",
            .package = "sox",
            .form = "ten equalizer effects",
            .filter = copy + effects,
            .null = copy};
}

/// Also tried on the same file: double precision and `biquad` cost the same; more expensive are the
/// other forms of `equalizer` (dii, tdi, tdii, latt, svf, zdf), `anequalizer`, `aiir` (serial,
/// parallel) and packets of the usual 4096 bytes; larger packets than these gain nothing.
Peer ffmpeg() {
    std::string chain;
    for (std::size_t band = 0; band < kBands; ++band)
        chain += (band > 0 ? ",equalizer=f=" : "equalizer=f=") + frequency(band) + ":t=q:w=" + kQ +
                 ":g=" + decibels(band) + ":a=di:r=f32";
    const auto command = [](const std::string& filters) {
        return Words{"ffmpeg",     "-nostdin",
                     "-nostats",   "-hide_banner",
                     "-loglevel",  "error",
                     "-y",         "-threads",
                     "1",          "-filter_threads",
                     "1",          "-max_size",
                     "65536",      "-i",
                     Peer::kInput, "-af",
                     filters,      "-c:a",
                     "pcm_f32le",  Peer::kOutput};
    };
    // The filters' own sample format, so that the conversions are subtracted, too.
    return {.name = "ffmpeg",
            .package = "ffmpeg",
            .form = "ten equalizer filters, direct form I, single precision, packets of 64 KiB",
            .filter = command(chain),
            .null = command("aformat=sample_fmts=fltp")};
}

/// "symbol=value", with the band's number after the symbol's first part.
std::string control(std::string symbol, std::size_t number, const char* rest,
                    const std::string& value) {
    return symbol.append(std::to_string(number)).append(rest).append("=").append(value);
}

struct Lv2Words {
    Words filter;
    Words null;
};

Lv2Words lv2Words(const std::string& build, const Words& effects) {
    const std::string host = build + "/bench/halvo-lv2-host";
    return {.filter = Words{host, Peer::kInput, Peer::kOutput} + effects,
            .null = Words{host, "--null", Peer::kInput, Peer::kOutput} + effects};
}

/// The smallest of its kind with ten bands; a band that is off costs it nothing. The filter mode is
/// the one whose curve is the cookbook's.
Peer lsp(const std::string& build) {
    Words effect{"http://lsp-plug.in/plugins/lv2/para_equalizer_x16_stereo", "mode=0"};
    for (std::size_t band = 0; band < kBands; ++band)
        effect =
            effect + Words{control("ft_", band, "", "1"), control("fm_", band, "", "6"),
                           control("f_", band, "", frequency(band)),
                           control("g_", band, "", amplitude(band)), control("q_", band, "", kQ)};
    auto [filter, null] = lv2Words(build, effect);
    return {.name = "LSP Parametric Equalizer x16 Stereo",
            .package = "lsp-plugins-lv2",
            .form = "ten bells, IIR, APO (DR)",
            .filter = std::move(filter),
            .null = std::move(null)};
}

/// Its equalizers have eight peaking filters at most: the largest, and the smallest for the rest.
Peer calf(const std::string& build) {
    constexpr std::size_t kPeaksOfLargest = 8;
    Words effects{"http://calf.sourceforge.net/plugins/Equalizer12Band"};
    for (std::size_t band = 0; band < kBands; ++band) {
        if (band == kPeaksOfLargest)
            effects = effects + Words{"+", "http://calf.sourceforge.net/plugins/Equalizer5Band"};
        const std::size_t peak = band % kPeaksOfLargest + 1;
        effects = effects + Words{control("p", peak, "_active", "1"),
                                  control("p", peak, "_freq", frequency(band)),
                                  control("p", peak, "_level", amplitude(band)),
                                  control("p", peak, "_q", kQ)};
    }
    auto [filter, null] = lv2Words(build, effects);
    return {.name = "Calf Equalizer 12 Band + 5 Band",
            .package = "calf-plugins",
            .form = "eight and two peaking filters in series",
            .filter = std::move(filter),
            .null = std::move(null)};
}

} // namespace

Words commandFor(const Words& words, const std::string& input, const std::string& output) {
    Words command = words;
    for (std::string& word : command) {
        if (word == Peer::kInput) word = input;
        if (word == Peer::kOutput) word = output;
    }
    return command;
}

Peer halvoRenderer(const std::string& build) {
    const Words start{build + "/tools/render/halvo-render", "--quiet", "--float", "--force"};
    const Words files{Peer::kInput, Peer::kOutput};
    return {.name = "Halvo",
            .package = {},
            .form = "halvo-render",
            .filter = start + Words{"--factory", "--preset", kPreset} + files,
            .null = start + Words{"--bypass"} + files};
}

std::vector<Peer> peers(const std::string& build) {
    return {sox(), ffmpeg(), lsp(build), calf(build)};
}

} // namespace halvo::bench
