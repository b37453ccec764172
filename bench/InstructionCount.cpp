#include "InstructionCount.h"

#include "RenderPieces.h"
#include "session/SessionDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS (void)0
#define CALLGRIND_DUMP_STATS_AT(name) (void)(name)
#endif

namespace halvo::bench {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::int64_t kBlock = 512;
constexpr std::int64_t kFrames = 16 * kBlock; // in these the spectrum has four transforms

void runForCounting(RenderPieces& pieces, const RenderPieces::Piece& piece,
                    std::vector<float> samples) {
    if (!piece.canRun()) return;
    // Once ahead: what happens at a first call only is not of interest.
    piece.run(pieces, samples.data(), kBlock);
    CALLGRIND_ZERO_STATS;
    for (std::int64_t at = 0; at < kFrames; at += kBlock)
        piece.run(pieces, samples.data() + 2 * at, kBlock);
    CALLGRIND_DUMP_STATS_AT(piece.name);
}

/// What follows `label` in the file's first line that begins so.
std::optional<std::string> valueIn(const fs::path& file, const std::string& label) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(label)) return line.substr(label.size());
    }
    return std::nullopt;
}

} // namespace

std::expected<json, std::string> countInstructions() {
    const auto folder = session::SessionDirectory::create();
    if (!folder) return std::unexpected(folder.error());
    std::error_code error;
    const auto self = fs::read_symlink("/proc/self/exe", error);
    const std::string runner = self.parent_path() / "halvo-instructions";
    const auto run = session::SpawnedProgram::run(
        {"valgrind", "--tool=callgrind", "--callgrind-out-file=" + (*folder)->path() + "/count",
         runner, "--run"},
        (*folder)->path() + "/log");
    if (!run) return std::unexpected(run.error());
    json result = json::object();
    for (const auto& entry : fs::directory_iterator((*folder)->path(), error)) {
        const auto name = valueIn(entry.path(), "desc: Trigger: Client Request: ");
        const auto total = valueIn(entry.path(), "totals: ");
        if (name && total) {
            result[*name] = std::strtod(total->c_str(), nullptr) / static_cast<double>(kFrames);
        }
    }
    if (result.empty()) return std::unexpected("callgrind wrote nothing down");
    return result;
}

void runPiecesForCounting() {
    const auto pieces = std::make_unique<RenderPieces>();
    const auto noise = RenderPieces::noise(kFrames);
    for (const auto list :
         {RenderPieces::cascades(), RenderPieces::stages(), RenderPieces::wholes()}) {
        for (const auto& piece : list)
            runForCounting(*pieces, piece, noise);
    }
}

std::string countedOn() {
#if defined(__clang__)
    const std::string compiler = "clang " + std::to_string(__clang_major__);
#else
    const std::string compiler = "g++ " + std::to_string(__GNUC__);
#endif
    return compiler + ", " + RenderPieces::nameOf(BiquadCascade::fastestForm());
}

} // namespace halvo::bench
