#include "RenderMeasurement.h"

#include "InstructionCount.h"
#include "RenderPieces.h"
#include "Statistics.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvo::bench {

namespace {

using nlohmann::json;
using Piece = RenderPieces::Piece;

constexpr std::int64_t kFrames = 8192; // of one timed run: both levels' caches hold them
constexpr std::int64_t kUsualBlock = 512;
constexpr std::array<std::int64_t, 3> kBlocks{64, 128, kUsualBlock};
constexpr int kRounds = 1500;
constexpr int kSilenceRounds = 40;
constexpr int kSilentRuns = 24; // of `kFrames`: four seconds, in which the filters fade away

double nanoseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start)
        .count();
}

/// Runs the pieces alternately, so that a slower machine slows all of them.
class AlternatingRuns {
  public:
    void add(const std::string& name, const Piece& piece, std::int64_t block) {
        if (piece.canRun()) entries_.push_back({name, piece, block, {}});
    }

    void run() {
        const auto noise = RenderPieces::noise(kFrames);
        std::vector<float> samples;
        for (int round = 0; round < kRounds; ++round) {
            for (auto& entry : entries_) {
                samples = noise;
                const double time = nanoseconds([&] {
                    for (std::int64_t at = 0; at < kFrames; at += entry.block)
                        entry.piece.run(*pieces_, samples.data() + 2 * at, entry.block);
                });
                entry.times.push_back(time / static_cast<double>(kFrames));
            }
        }
    }

    /// Nanoseconds per frame; absent where the piece cannot run.
    std::optional<double> perFrame(const std::string& name) const {
        const auto* entry = find(name);
        if (!entry) return std::nullopt;
        return median(entry->times);
    }

    /// The median of the rounds' own ratios.
    double ratio(const std::string& name, const std::string& to) const {
        const auto& above = find(name)->times;
        const auto& below = find(to)->times;
        std::vector<double> ratios;
        std::ranges::transform(above, below, std::back_inserter(ratios), std::divides{});
        return median(ratios);
    }

  private:
    struct Entry {
        std::string name;
        Piece piece;
        std::int64_t block;
        std::vector<double> times;
    };
    const Entry* find(const std::string& name) const {
        const auto found = std::ranges::find(entries_, name, &Entry::name);
        return found == entries_.end() ? nullptr : &*found;
    }

    std::unique_ptr<RenderPieces> pieces_ = std::make_unique<RenderPieces>();
    std::vector<Entry> entries_;
};

std::string atBlock(const char* name, std::int64_t block) {
    std::string result = name;
    result += ' ';
    return result += std::to_string(block);
}

json cascadeFigures(const AlternatingRuns& runs) {
    const auto usual = [](const char* name) { return atBlock(name, kUsualBlock); };
    json forms = json::object();
    for (const char* form : {"fourLanes", "eightLanes"}) {
        if (!runs.perFrame(usual(form))) continue;
        json byBlock = json::object();
        for (const auto block : kBlocks)
            byBlock[std::to_string(block)] = *runs.perFrame(atBlock(form, block));
        forms[form] = {{"nsPerFrame", *runs.perFrame(usual(form))},
                       {"ratioToLimit", runs.ratio(usual(form), usual("limit"))},
                       {"ratioToPlain", runs.ratio(usual(form), usual("plain"))},
                       {"byBlockSize", byBlock}};
    }
    const auto* form = RenderPieces::nameOf(BiquadCascade::fastestForm());
    const auto counted = countInstructions();
    json instructions;
    if (counted) {
        instructions = counted->value(form, json());
        for (auto& [name, figures] : forms.items())
            figures["instructionsPerFrame"] = counted->value(name, json());
    }
    return {{"form", form},
            {"instructionsPerFrame", instructions},
            {"nsPerFrame", forms[form]["nsPerFrame"]},
            {"ratioToLimit", forms[form]["ratioToLimit"]},
            {"plainNsPerFrame", *runs.perFrame(usual("plain"))},
            {"limitNsPerFrame", *runs.perFrame(usual("limit"))},
            {"forms", forms}};
}

json wholeFigures(const AlternatingRuns& runs) {
    json result = json::object();
    for (const auto block : kBlocks) {
        const auto whole = atBlock("processBuffer", block);
        result[std::to_string(block)] = {
            {"nsPerFrame", *runs.perFrame(whole)},
            {"plainNsPerFrame", *runs.perFrame(atBlock("plainProcessBuffer", block))},
            {"ratioToLimit", runs.ratio(whole, atBlock("limit", kUsualBlock))}};
    }
    return result;
}

/// After the sound the filters' state decays, possibly to denormal numbers, with which some
/// processors are slow.
json silenceFigures() {
    const auto heard = std::make_unique<RenderPieces>();
    const auto faded = std::make_unique<RenderPieces>();
    const auto noise = RenderPieces::noise(kFrames);
    const std::vector<float> nothing(noise.size(), 0.0F);
    std::vector<float> samples;
    const auto timeOf = [&](RenderPieces& pieces, const std::vector<float>& block) {
        samples = block;
        const double time = nanoseconds([&] {
            for (std::int64_t at = 0; at < kFrames; at += kUsualBlock)
                RenderPieces::wholes().front().run(pieces, samples.data() + 2 * at, kUsualBlock);
        });
        return time / static_cast<double>(kFrames);
    };
    std::array<std::vector<double>, kSilentRuns> silence;
    std::array<std::vector<double>, kSilentRuns> ratios;
    for (int round = 0; round < kSilenceRounds; ++round) {
        (void)timeOf(*faded, noise); // only to fill the filters
        for (std::size_t run = 0; run < kSilentRuns; ++run) {
            const double sound = timeOf(*heard, noise);
            silence[run].push_back(timeOf(*faded, nothing));
            ratios[run].push_back(silence[run].back() / sound);
        }
    }
    const auto slowest = std::ranges::max_element(ratios, {}, median);
    const auto run = static_cast<std::size_t>(slowest - ratios.begin());
    return {{"silenceNsPerFrame", median(silence[run])}, {"ratio", median(ratios[run])}};
}

} // namespace

json measureRenderPath() {
    AlternatingRuns runs;
    for (const auto block : kBlocks) {
        for (const auto pieces : {RenderPieces::cascades(), RenderPieces::wholes()}) {
            for (const auto& piece : pieces)
                runs.add(atBlock(piece.name, block), piece, block);
        }
    }
    for (const auto& stage : RenderPieces::stages())
        runs.add(stage.name, stage, kUsualBlock);
    runs.add("fft", RenderPieces::transform(), RealFFT::kSize);
    runs.run();
    json stages = json::object();
    for (const auto& stage : RenderPieces::stages())
        stages[stage.name] = *runs.perFrame(stage.name);
    return {{"cascade", cascadeFigures(runs)},
            {"stages", stages},
            {"processBuffer", wholeFigures(runs)},
            {"fft", {{"microseconds", *runs.perFrame("fft") * RealFFT::kSize / 1000}}},
            {"silenceAfterSound", silenceFigures()}};
}

} // namespace halvo::bench
