#include "BenchReport.h"
#include "CallbackMeasurement.h"
#include "PeerMeasurement.h"
#include "RenderMeasurement.h"
#include "SessionMeasurement.h"
#include "demo/Progress.h"
#include "demo/SoundFile.h"
#include "session/SessionDirectory.h"
#include "session/SpawnedProgram.h"

#include <QCoreApplication>

#include <nlohmann/json.hpp>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>

namespace {

namespace fs = std::filesystem;
using halvo::demo::progress;
using halvo::session::SessionDirectory;
using nlohmann::ordered_json;

constexpr const char* kUsage =
    "usage: halvo-bench [--only PART]... [FOLDER]\n"
    "Measures what Halvo costs and writes report.json into FOLDER (out/bench).\n"
    "  --only PART  render, callback, peers, session or desktop\n";

/// A directory in memory where there is room, so that no disk is measured; else on the disk.
std::unique_ptr<SessionDirectory> makeWorkDirectory() {
    constexpr std::uintmax_t kNeeded = 1'000'000'000; // bytes
    std::error_code error;
    const auto space = fs::space("/dev/shm", error);
    const bool fits = !error && space.available > kNeeded;
    auto made = SessionDirectory::create(fits ? "/dev/shm" : "");
    if (made) return std::move(*made);
    (void)std::fprintf(stderr, "halvo-bench: %s\n", made.error().c_str());
    return nullptr;
}

constexpr const char* kParts[] = {"render", "callback", "session", "desktop", "peers"};

struct Arguments {
    std::set<std::string> parts{std::begin(kParts), std::end(kParts)};
    std::string folder = "out/bench";
};

std::optional<Arguments> parse(std::span<char*> words) {
    Arguments arguments;
    std::set<std::string> only;
    bool isPart = false; // whether "--only" was the word before
    for (const std::string word : words) {
        if (isPart && !arguments.parts.contains(word)) return std::nullopt;
        if (isPart)
            only.insert(word);
        else if (word != "--only")
            arguments.folder = word;
        isPart = word == "--only";
    }
    if (isPart || arguments.folder.starts_with('-')) return std::nullopt;
    if (!only.empty()) arguments.parts = only;
    return arguments;
}

std::string buildFolder() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return self.parent_path().parent_path(); // this program lies in bench/ of it
}

/// In another program, which has an application object and a virtual screen.
bool measureDesktop(ordered_json& report) {
    const auto work = makeWorkDirectory();
    if (!work) return false;
    const std::string file = work->path() + "/desktop.json";
    const auto run = halvo::session::SpawnedProgram::run(
        {buildFolder() + "/bench/halvo-desktop-bench", file}, work->path() + "/log");
    if (run) {
        report.update(ordered_json::parse(std::ifstream(file)));
    } else {
        (void)std::fprintf(stderr, "halvo-bench: %s\n", run.error().c_str());
    }
    return run.has_value();
}

/// What the figures mean where their names do not say it.
ordered_json units() {
    return {{"callback", "microseconds"},
            {"stages", "nanoseconds per stereo frame"},
            {"cpuSecondsPerMinute", "per minute of stereo sound at 48000 frames per second"},
            {"idle", "application and driver together"},
            {"playing", "application and driver together"}};
}

/// Measures the parts into `report`; false when something could not be measured.
bool measure(const Arguments& arguments, ordered_json& report) {
    bool isWhole = true;
    if (arguments.parts.contains("render")) {
        progress("The render path and its stages");
        report.update(ordered_json(halvo::bench::measureRenderPath()));
    }
    if (arguments.parts.contains("callback")) {
        progress("The render callback as a sound server calls it");
        report["callback"] = halvo::bench::measureCallback();
    }
    if (arguments.parts.contains("peers")) {
        const auto work = makeWorkDirectory();
        if (!work) return false;
        report.update(halvo::bench::PeerMeasurement(work->path(), buildFolder()).run());
        isWhole = report["missing"].empty();
    }
    if (arguments.parts.contains("session")) {
        const auto session = halvo::bench::measureSession();
        if (session)
            report.update(*session);
        else
            std::fprintf(stderr, "halvo-bench: %s\n", session.error().c_str());
        isWhole = isWhole && session.has_value();
    }
    if (arguments.parts.contains("desktop")) {
        progress("The item and the panel on a screen in memory");
        isWhole = measureDesktop(report) && isWhole;
    }
    return isWhole;
}

void print(const ordered_json& report) {
    std::printf("\n%s", halvo::bench::table(report).c_str());
    for (const auto& [aim, measured, holds] : halvo::bench::verdicts(report))
        std::printf("%-56s%9.2f  %s\n", aim.c_str(), measured, holds ? "yes" : "NO");
}

int run(const Arguments& arguments) {
    ordered_json report;
    const bool isWhole = measure(arguments, report);
    report["units"] = units();
    print(report);

    std::error_code error;
    fs::create_directories(arguments.folder, error); // what fails here fails below
    const std::string path = arguments.folder + "/report.json";
    // What a peer says when it fails may be in any encoding.
    const std::string text = report.dump(2, ' ', false, ordered_json::error_handler_t::replace);
    if (const auto failure = halvo::demo::writeTextFile(path, text + "\n")) {
        std::fprintf(stderr, "halvo-bench: %s\n", failure->c_str());
        return EXIT_FAILURE;
    }
    std::printf("All figures are in %s.\n", path.c_str());
    return isWhole ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argumentCount, char** words) try {
    // Qt alone needs it, for the session bus; numbers keep their point whatever the language.
    const QCoreApplication application(argumentCount, words);
    (void)std::setlocale(LC_NUMERIC, "C");
    const auto arguments =
        parse(std::span(words, static_cast<std::size_t>(argumentCount)).subspan(1));
    if (arguments) return run(*arguments);
    std::fputs(kUsage, stderr);
    return 2;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "halvo-bench: %s\n", exception.what());
    return EXIT_FAILURE;
}
