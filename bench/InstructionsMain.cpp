#include "InstructionCount.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>

namespace {

using nlohmann::json;

constexpr const char* kUsage =
    "usage: halvo-instructions --check FILE | --record FILE\n"
    "Counts the render path's instructions per stereo frame under valgrind's callgrind.\n"
    "  --check FILE   compares with what FILE has recorded; a rise of more than 10 % fails\n"
    "  --record FILE  writes the figures into FILE, for this compiler and instruction set\n";
constexpr double kAllowedRise = 1.1;

json readRecords(const std::string& path) {
    std::ifstream file(path);
    auto records = json::parse(file, nullptr, false);
    return records.is_object() ? records : json::object();
}

int record(const std::string& path, const json& counted) {
    auto records = readRecords(path);
    records[halvo::bench::countedOn()] = counted;
    std::ofstream file(path);
    file << records.dump(2) << '\n';
    return file.good() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int check(const std::string& path, const json& counted) {
    const auto records = readRecords(path);
    const auto where = halvo::bench::countedOn();
    if (!records.contains(where)) {
        std::printf("%s has no figures for %s: nothing to compare\n", path.c_str(), where.c_str());
        return records.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    bool hasRisen = false;
    for (const auto& [name, recorded] : records[where].items()) {
        const double before = recorded.get<double>();
        const double now = counted.value(name, 0.0);
        const bool isMissing = now == 0.0;
        const bool rises = isMissing || now > before * kAllowedRise;
        hasRisen = hasRisen || rises;
        std::printf("%-20s%10.2f, recorded %10.2f%s\n", name.c_str(), now, before,
                    isMissing ? "  MISSING" : (rises ? "  TOO MANY" : ""));
    }
    std::printf("instructions per frame on %s: %s\n", where.c_str(),
                hasRisen ? "more than 10 % above the record" : "as recorded");
    return hasRisen ? EXIT_FAILURE : EXIT_SUCCESS;
}

int run(const std::string& mode, const std::string& path) {
    const auto counted = halvo::bench::countInstructions();
    if (!counted) {
        std::fprintf(stderr, "halvo-instructions: %s\n", counted.error().c_str());
        return EXIT_FAILURE;
    }
    return mode == "--check" ? check(path, *counted) : record(path, *counted);
}

} // namespace

int main(int argumentCount, char** words) try {
    const std::string mode = argumentCount > 1 ? words[1] : "";
    if (mode == "--run") {
        halvo::bench::runPiecesForCounting();
        return EXIT_SUCCESS;
    }
    if (argumentCount != 3 || (mode != "--check" && mode != "--record")) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    return run(mode, words[2]);
} catch (const std::exception& error) { // of the JSON library: a record that holds something else
    std::fprintf(stderr, "halvo-instructions: %s\n", error.what());
    return EXIT_FAILURE;
}
