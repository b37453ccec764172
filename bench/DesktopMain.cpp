#include "DesktopMeasurement.h"
#include "demo/SoundFile.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>

/// Measures tray item and panel in a process of its own and writes the report into a file.
int main(int argumentCount, char** words) try {
    if (argumentCount != 2) {
        (void)std::fputs("usage: halvo-desktop-bench FILE\n", stderr);
        return 2;
    }
    const auto report = halvo::bench::measureDesktop();
    const auto failure = halvo::demo::writeTextFile(words[1], report.dump(2) + "\n");
    if (!failure) return EXIT_SUCCESS;
    (void)std::fprintf(stderr, "%s\n", failure->c_str());
    return EXIT_FAILURE;
} catch (const std::exception& exception) {
    (void)std::fprintf(stderr, "%s\n", exception.what());
    return EXIT_FAILURE;
}
