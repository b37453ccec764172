#include "render/Options.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace halvo::render {

namespace {

using Failure = std::optional<std::string>; ///< a sentence

std::optional<float> numberIn(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    float value = 0;
    stream >> value;
    const bool whole = !stream.fail() && stream.peek() == std::istringstream::traits_type::eof();
    return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::expected<float, std::string> gainIn(const std::string& text) {
    const auto value = numberIn(text);
    if (!value) {
        return std::unexpected("\"" + text +
                               "\" is not a number; gains are in dB with a decimal point, as 4.5");
    }
    if (std::fabs(*value) > kLargestGain)
        return std::unexpected("a gain of " + text + " dB is out of range; it goes from -20 to 20");
    return *value;
}

Failure readGains(const std::string& text, Options& options) {
    std::vector<float> gains;
    std::istringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');) {
        const auto gain = gainIn(item);
        if (!gain) return gain.error();
        gains.push_back(*gain);
    }
    auto& kept = options.gains.emplace();
    if (gains.size() != kept.size() || text.ends_with(',')) {
        return "--gains takes ten numbers with commas between them, lowest band first; \"" + text +
               "\" holds " + std::to_string(gains.size());
    }
    std::ranges::copy(gains, kept.begin());
    return std::nullopt;
}

Failure readPreamp(const std::string& text, Options& options) {
    const auto gain = gainIn(text);
    if (!gain) return gain.error();
    options.preamp = *gain;
    return std::nullopt;
}

struct Switch {
    std::string_view name;
    void (*set)(Options&);
};
constexpr Switch kSwitches[] = {
    {"--bypass", [](Options& o) { o.bypass = true; }},
    {"--factory", [](Options& o) { o.factoryOnly = true; }},
    {"--float", [](Options& o) { o.writeFloat = true; }},
    {"--force", [](Options& o) { o.force = true; }},
    {"--help", [](Options& o) { o.action = Options::Action::help; }},
    {"--list", [](Options& o) { o.action = Options::Action::list; }},
    {"--quiet", [](Options& o) { o.quiet = true; }},
    {"--truncated", [](Options& o) { o.acceptTruncated = true; }},
    {"--version", [](Options& o) { o.action = Options::Action::version; }},
};

struct Setting {
    std::string_view name;
    Failure (*set)(const std::string&, Options&);
};
constexpr Setting kSettings[] = {
    {"--gains", readGains},
    {"--preamp", readPreamp},
    {"--preset",
     [](const std::string& text, Options& o) -> Failure {
         o.preset = text;
         return std::nullopt;
     }},
    {"--presets-file",
     [](const std::string& text, Options& o) -> Failure {
         o.presetsFile = text;
         return std::nullopt;
     }},
};

/// Reads the first option in `rest` and removes it with its value.
Failure readOption(std::span<const char* const>& rest, Options& options) {
    const std::string_view argument = rest.front();
    rest = rest.subspan(1);
    const auto equals = argument.find('=');
    const bool hasValue = equals != std::string_view::npos;
    const auto name = argument.substr(0, equals);
    if (const auto* found = std::ranges::find(kSwitches, name, &Switch::name);
        found != std::end(kSwitches)) {
        if (hasValue) return std::string(name) + " takes no value";
        found->set(options);
        return std::nullopt;
    }
    const auto* found = std::ranges::find(kSettings, name, &Setting::name);
    if (found == std::end(kSettings)) return "there is no option " + std::string(name);
    if (hasValue) return found->set(std::string(argument.substr(equals + 1)), options);
    if (rest.empty()) return std::string(name) + " needs a value";
    const std::string value = rest.front();
    rest = rest.subspan(1);
    return found->set(value, options);
}

Failure contradictionIn(const Options& options, std::size_t fileCount) {
    if (options.presetsFile && options.factoryOnly)
        return "--presets-file and --factory exclude each other";
    if (options.action != Options::Action::render) return std::nullopt;
    if (fileCount != 2) return "an input file and an output file are needed, in this order";
    if (options.preset && options.gains) return "--preset and --gains exclude each other";
    if (!options.preset && !options.gains && !options.preamp && !options.bypass)
        return "nothing to apply: name a --preset, or give --gains";
    return std::nullopt;
}

} // namespace

std::expected<Options, std::string> parseOptions(std::span<const char* const> arguments) {
    Options options;
    std::vector<std::string> files;
    bool onlyFiles = false;
    while (!arguments.empty()) {
        const std::string_view argument = arguments.front();
        if (onlyFiles || !argument.starts_with("-")) {
            files.emplace_back(argument);
        } else if (argument != "--") {
            if (auto failure = readOption(arguments, options)) return std::unexpected(*failure);
            continue;
        } else {
            onlyFiles = true;
        }
        arguments = arguments.subspan(1);
    }
    const bool answersOnly =
        options.action == Options::Action::help || options.action == Options::Action::version;
    if (answersOnly) return options;
    if (auto failure = contradictionIn(options, files.size())) return std::unexpected(*failure);
    if (options.action == Options::Action::render) {
        options.input = files[0];
        options.output = files[1];
    }
    return options;
}

const char* helpText() {
    return "Usage: halvo-render OPTION... INPUT.wav OUTPUT.wav\n"
           "Runs a WAV file through Halvo's equalizer; what is written is what would be heard.\n"
           "\n"
           "What to apply:\n"
           "  --preset NAME        a preset: your own and the factory's, as Halvo shows them\n"
           "  --presets-file FILE  take the preset from this presets.json\n"
           "  --factory            take the preset from the factory's alone\n"
           "  --gains G1,...,G10   ten gains in dB, -20 to 20, for 32 Hz up to 16000 Hz\n"
           "  --preamp GAIN        gain ahead of the bands in dB, in place of the preset's\n"
           "  --bypass             equalizer off: the file is only copied\n"
           "\n"
           "What to read and write:\n"
           "  --float              write 32-bit floats (else in the input's own format)\n"
           "  --force              replace OUTPUT.wav if it is there already\n"
           "  --truncated          render what there is of an input that is cut short\n"
           "\n"
           "  --list               list the presets and their gains, and exit\n"
           "  --quiet              no progress bar\n"
           "  --help, --version    show this text or the version, and exit\n"
           "\n"
           "The input has one channel or two and up to 192000 frames per second. Ctrl+C leaves\n"
           "nothing behind. Exit status: 0 done, 1 failed, 2 the command line was not "
           "understood.\n";
}

} // namespace halvo::render
