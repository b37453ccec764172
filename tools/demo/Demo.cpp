#include "Demo.h"

#include "Alignment.h"
#include "ExpectedResponse.h"
#include "GenreShow.h"
#include "PresetsFile.h"
#include "ProcessUsage.h"
#include "Progress.h"
#include "SoundFile.h"
#include "StatusWatch.h"
#include "TransferFunction.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <tuple>
#include <utility>

namespace halvo::demo {
namespace {

using session::PrivateSession;
using Seconds = std::chrono::duration<double>;

constexpr std::array<float, 10> kFlat{};
constexpr float kTestGainDb = 12;
constexpr std::array<int, 4> kFirstBands{0, 3, 6, 9};
constexpr std::array<int, 3> kSecondBands{1, 4, 7};
constexpr std::array<int, 3> kThirdBands{2, 5, 8};

/// The gain that was heard at one band, in the channel that is further from what is expected.
BandMeasurement measure(const TransferFunction& transfer, const ExpectedResponse& expected,
                        std::size_t band, float gainDb) {
    const double frequency = kBandFrequencies[band];
    const double wanted = expected.decibelsAt(frequency);
    const double left = transfer.decibelsAt(frequency, 0);
    const double right = transfer.decibelsAt(frequency, 1);
    return {.frequencyHz = static_cast<int>(frequency),
            .gainDb = static_cast<double>(gainDb),
            .expectedDb = wanted,
            .measuredDb = std::abs(left - wanted) > std::abs(right - wanted) ? left : right};
}

/// Whether the next tenth of a second is silence.
bool isSilent(session::Recorder& recorder) {
    recorder.clear();
    return PrivateSession::waitFor([&] { return recorder.frames() >= kSampleRate / 10; }) &&
           recorder.recording().peak() <= 0;
}

double cpuPercent(const ProcessUsage& before, const ProcessUsage& after, Seconds duration) {
    return 100 * (after.cpuSeconds - before.cpuSeconds) / duration.count();
}

} // namespace

std::expected<Report, std::string> Demo::run() {
    for (const auto step : {&Demo::prepare, &Demo::straightRun, &Demo::flatRun, &Demo::bandRuns,
                            &Demo::firstPresetRun, &Demo::genreRun, &Demo::writeReport})
        if (auto outcome = (this->*step)(); !outcome) return std::unexpected(outcome.error());
    return report_;
}

Demo::Outcome Demo::prepare() {
    progress("Halvo plays into simulated speakers; this takes about a minute.");
    auto programs = Programs::find();
    if (!programs) return std::unexpected(programs.error());
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error) return std::unexpected("cannot create " + folder_ + ": " + error.message());
    if (const auto failure = writeSoundFile(folder_ + "/before.wav", track_.sound()))
        return std::unexpected(*failure);

    auto stage = Stage::open(std::move(*programs));
    if (!stage) return std::unexpected(stage.error());
    stage_ = std::move(*stage);
    for (const auto& [name, sound, path] : {std::tuple("track.wav", track_.sound(), &trackFile_),
                                            std::tuple("music.wav", track_.music(), &musicFile_),
                                            std::tuple("sweep.wav", track_.sweep(), &sweepFile_)}) {
        auto prepared = stage_->prepare(name, sound);
        if (!prepared) return std::unexpected(prepared.error());
        *path = *prepared;
    }
    progress("A private sound session with simulated speakers and the driver is up.");
    return {};
}

Demo::Outcome Demo::straightRun() {
    const StereoSound excerpt = track_.music().stretch(0, kSampleRate / 2);
    const auto path = stage_->prepare("excerpt.wav", excerpt);
    if (!path) return std::unexpected(path.error());
    const auto take = Take::record(*stage_, *path, excerpt, Stage::kSpeakers);
    if (!take) return std::unexpected(take.error());
    if (take->heard.samples != excerpt.samples)
        return std::unexpected("Without Halvo the speakers do not play what is sent to them.");
    progress("Without Halvo the speakers play exactly what is sent to them.");
    return {};
}

Demo::Outcome Demo::flatRun() {
    auto speakers = stage_->record(Stage::kSpeakers);
    if (!speakers) return std::unexpected(speakers.error());
    auto client = stage_->startPlayingIntoVirtualOutput(trackFile_);
    if (!client) return std::unexpected(client.error());
    auto application = startWithGains(kFlat);
    if (!application) return std::unexpected(application.error());
    if (auto outcome = measureStart(**application, **speakers); !outcome) return outcome;
    (*client)->end();
    if (!PrivateSession::waitFor([&] { return isSilent(**speakers); }))
        return std::unexpected("The speakers go on playing after the client has ended.");
    speakers->reset();

    if (auto outcome = playFlat(**application); !outcome) return outcome;
    progress("Flat preset: %s, %lld frames later.",
             report_.flatBitExact ? "the same bit for bit" : "NOT the same bit for bit",
             static_cast<long long>(report_.addedLatencyFrames));
    return (*application)->quit();
}

Demo::Outcome Demo::measureStart(ApplicationRun& application, session::Recorder& speakers) {
    const auto sounds = [&] { return speakers.recording().peak() > 0; };
    if (!PrivateSession::waitFor(sounds))
        return std::unexpected("A client plays, but nothing comes out of the speakers.");
    // Counted back from now: the recording may have paused while the server joined the nodes.
    const session::Recording recording = speakers.recording();
    const auto now = ApplicationRun::Clock::now();
    StereoSound sound;
    sound.samples = recording.samples;
    const std::size_t first = firstSoundingFrame(sound).value_or(sound.frameCount());
    const Seconds ago(static_cast<double>(sound.frameCount() - first) / kSampleRate);
    report_.startToSoundMs = 1000 * (Seconds(now - application.startTime()) - ago).count();
    progress("Halvo starts: the first sound after %.0f ms.", report_.startToSoundMs);
    return {};
}

Demo::Outcome Demo::playFlat(ApplicationRun& application) {
    const auto halvoBefore = ProcessUsage::of(application.pid());
    const auto driverBefore = ProcessUsage::of(stage_->driverPid());
    const auto begin = ApplicationRun::Clock::now();
    const StereoSound music = track_.music();
    const auto take = Take::record(*stage_, musicFile_, music, Stage::kVirtualOutput);
    if (!take) return std::unexpected(take.error());
    const Seconds duration = ApplicationRun::Clock::now() - begin;
    const auto halvoAfter = ProcessUsage::of(application.pid());
    const auto driverAfter = ProcessUsage::of(stage_->driverPid());
    if (!halvoBefore || !halvoAfter) return std::unexpected("halvo ended while it played.");
    if (!driverBefore || !driverAfter) return std::unexpected("The driver ended while it played.");

    report_.flatBitExact = take->heard.samples == music.samples;
    report_.underruns += take->gaps;
    report_.repeatedTakes += take->repetitions;
    report_.addedLatencyFrames = take->delayFrames;
    report_.halvo = {.cpuPercent = cpuPercent(*halvoBefore, *halvoAfter, duration),
                     .rssMiB = halvoAfter->residentMiB};
    report_.driver = {.cpuPercent = cpuPercent(*driverBefore, *driverAfter, duration),
                      .rssMiB = driverAfter->residentMiB};
    return {};
}

Demo::Outcome Demo::bandRuns() {
    for (const std::span<const int> bands :
         {std::span<const int>(kFirstBands), std::span<const int>(kSecondBands),
          std::span<const int>(kThirdBands)})
        for (const float gainDb : {kTestGainDb, -kTestGainDb})
            if (auto outcome = bandRun(bands, gainDb); !outcome) return outcome;
    std::ranges::sort(report_.bands, {}, [](const BandMeasurement& band) {
        return std::pair(band.frequencyHz, band.gainDb);
    });
    return {};
}

Demo::Outcome Demo::bandRun(std::span<const int> bands, float gainDb) {
    std::array<float, 10> gains{};
    for (const int band : bands)
        gains[static_cast<std::size_t>(band)] = gainDb;
    auto application = startWithGains(gains);
    if (!application) return std::unexpected(application.error());
    const StereoSound sweep = track_.sweep();
    const auto take = Take::record(*stage_, sweepFile_, sweep, Stage::kVirtualOutput);
    if (!take) return std::unexpected(take.error());
    report_.underruns += take->gaps;
    report_.repeatedTakes += take->repetitions;

    const TransferFunction transfer(sweep, take->heardWithMargins);
    const ExpectedResponse expected(gains, kSampleRate);
    double worst = 0;
    for (const int band : bands) {
        report_.bands.push_back(
            measure(transfer, expected, static_cast<std::size_t>(band), gainDb));
        worst = std::max(
            worst, std::abs(report_.bands.back().measuredDb - report_.bands.back().expectedDb));
    }
    progress("%zu bands at %+.0f dB: heard within %.2f dB of the formula.", bands.size(),
             static_cast<double>(gainDb), worst);
    return (*application)->quit();
}

Demo::Outcome Demo::firstPresetRun() {
    if (const auto failure = removePresetsFile(stage_->dataHome()))
        return std::unexpected(*failure);
    auto application = ApplicationRun::start(*stage_);
    if (!application) return std::unexpected(application.error());
    if (auto ready = (*application)->waitUntilReady(); !ready) return ready;
    StatusWatch status(stage_->session().directory() + "/run/bus");
    const auto take = Take::record(*stage_, trackFile_, track_.sound(), Stage::kVirtualOutput);
    const auto seen = status.finish();
    if (!take) return std::unexpected(take.error());
    report_.activePreset = seen.activePreset;
    report_.bandLevels = seen.highestLevels;
    report_.underruns += take->gaps;
    report_.repeatedTakes += take->repetitions;
    if (const auto failure = writeSoundFile(folder_ + "/after.wav", take->heard))
        return std::unexpected(*failure);
    if (auto outcome = judgeFirstPreset(*take); !outcome) return outcome;
    return (*application)->quit();
}

Demo::Outcome Demo::judgeFirstPreset(const Take& take) {
    const auto preset = readFirstPreset(stage_->dataHome());
    if (!preset) return std::unexpected("halvo has not written its list of factory presets.");
    const ExpectedResponse expected(preset->gainsDb, kSampleRate);
    const StereoSound sweep = track_.sweep();
    const StereoSound heard =
        take.heard.stretch(static_cast<std::ptrdiff_t>(track_.sweepBegin()), sweep.frameCount());
    const TransferFunction transfer(sweep, heard);
    for (std::size_t band = 0; band < kBandFrequencies.size(); ++band)
        report_.firstPresetDeviationDb = std::max(report_.firstPresetDeviationDb,
                                                  measure(transfer, expected, band, 0).deviation());
    progress("The first factory preset, \"%s\": heard within %.2f dB of the formula.",
             preset->name.c_str(), report_.firstPresetDeviationDb);
    return {};
}

Demo::Outcome Demo::genreRun() {
    auto tracks = showGenres(*stage_);
    if (!tracks) return std::unexpected(tracks.error());
    report_.tracks = std::move(*tracks);
    return {};
}

Demo::Outcome Demo::writeReport() {
    if (const auto failure = writeTextFile(folder_ + "/report.json", report_.json()))
        return std::unexpected(*failure);
    return {};
}

std::expected<std::unique_ptr<ApplicationRun>, std::string>
Demo::startWithGains(std::span<const float> gainsDb) {
    if (const auto failure = writePresetsFile(stage_->dataHome(), "Demo", gainsDb))
        return std::unexpected(*failure);
    auto application = ApplicationRun::start(*stage_);
    if (!application) return std::unexpected(application.error());
    if (auto ready = (*application)->waitUntilReady(); !ready)
        return std::unexpected(ready.error());
    return application;
}

} // namespace halvo::demo
