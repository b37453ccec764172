#include "linux/files/XdgDirectories.h"
#include "render/Interruption.h"
#include "render/Options.h"
#include "render/PresetChoice.h"
#include "render/ProgressBar.h"
#include "render/RenderFile.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

using namespace halvo;
using namespace halvo::render;

namespace {

constexpr int kNotUnderstood = 2;

int complain(const std::string& sentence) {
    (void)std::fprintf(stderr, "halvo-render: %s\n", sentence.c_str());
    return EXIT_FAILURE;
}

int print(const std::string& text) {
    const bool written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return written ? EXIT_SUCCESS : complain("cannot write to standard output");
}

int listPresets(const Options& options, const std::filesystem::path& ownFile) {
    const auto presets = availablePresets(options, ownFile);
    return presets ? print(presetTable(*presets)) : complain(presets.error());
}

int run(const Options& options, const std::filesystem::path& ownFile) {
    const auto preset = choosePreset(options, ownFile);
    if (!preset) return complain(preset.error());
    const Interruption interruption;
    ProgressBar bar(!options.quiet && ::isatty(STDERR_FILENO) == 1 ? stderr : nullptr);
    const auto report = renderFile(options, *preset, [&](std::int64_t done, std::int64_t total) {
        bar.show(done, total);
        return interruption.signal() == 0;
    });
    bar.wipe();
    if (!report) {
        if (const int signal = interruption.signal()) Interruption::endBy(signal);
        return complain(report.error());
    }
    (void)std::fputs(report->remarks().c_str(), stderr); // the file is written all the same
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    const std::span<const char* const> arguments(argv, static_cast<std::size_t>(argc));
    const auto options = parseOptions(arguments.subspan(argc > 0 ? 1 : 0));
    if (!options) {
        (void)complain(options.error() + "\nTry: halvo-render --help");
        return kNotUnderstood;
    }
    const auto ownFile = dataDirectory() / "Halvo" / "presets.json";
    switch (options->action) {
    case Options::Action::help:
        return print(helpText());
    case Options::Action::version:
        return print("halvo-render " HALVO_VERSION "\n");
    case Options::Action::list:
        return listPresets(*options, ownFile);
    case Options::Action::render:
        break;
    }
    return run(*options, ownFile);
}
