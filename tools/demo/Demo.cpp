#include "Demo.h"

#include "ApplicationBus.h"
#include "ExpectedResponse.h"
#include "GenreShow.h"
#include "PresetsFile.h"
#include "ProcessUsage.h"
#include "Progress.h"
#include "SoundFile.h"
#include "TransferFunction.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <utility>

namespace halvo::demo {
namespace {

using session::PrivateSession;
using Seconds = std::chrono::duration<double>;

constexpr std::array<float, 10> kFlat{};
constexpr float kTestGainDb = 12;
/// Bands at this distance are measured in one run; one hardly reaches into the next.
constexpr std::size_t kBandStep = 3;

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
    if (const auto failure = writeSoundFile(folder_ + "/before.wav", track_.sound))
        return std::unexpected(*failure);

    auto session = MeasurementSession::open(std::move(*programs));
    if (!session) return std::unexpected(session.error());
    session_ = std::move(*session);
    progress("A private sound session with simulated speakers and the driver is up.");
    return {};
}

Demo::Outcome Demo::straightRun() {
    const StereoSound excerpt = track_.music.stretch(0, kSampleRate / 2);
    const auto measured = Measurement::make(*session_, excerpt, MeasurementSession::kSpeakers);
    if (!measured) return std::unexpected(measured.error());
    if (measured->heard.stretch(0, excerpt.frameCount()).samples != excerpt.samples)
        return std::unexpected("Without Halvo the speakers do not play what is sent to them.");
    progress("Without Halvo the speakers play exactly what is sent to them.");
    return {};
}

Demo::Outcome Demo::flatRun() {
    auto speakers = session_->record(MeasurementSession::kSpeakers);
    if (!speakers) return std::unexpected(speakers.error());
    const auto file = session_->prepare("track.wav", track_.sound);
    if (!file) return std::unexpected(file.error());
    auto client = session_->startPlayingIntoVirtualOutput(*file);
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
    const auto first = std::ranges::find_if(recording.samples, [](float x) { return x != 0; });
    const Seconds ago(static_cast<double>(recording.samples.end() - first) / (2.0 * kSampleRate));
    report_.startToSoundMs = 1000 * (Seconds(now - application.startTime()) - ago).count();
    progress("Halvo starts: the first sound after %.0f ms.", report_.startToSoundMs);
    return {};
}

Demo::Outcome Demo::playFlat(ApplicationRun& application) {
    const auto halvoBefore = ProcessUsage::of(application.pid());
    const auto driverBefore = ProcessUsage::of(session_->driverPid());
    const auto begin = ApplicationRun::Clock::now();
    const auto measured = playIntoHalvo(track_.music);
    if (!measured) return std::unexpected(measured.error());
    const Seconds duration = ApplicationRun::Clock::now() - begin;
    const auto halvoAfter = ProcessUsage::of(application.pid());
    const auto driverAfter = ProcessUsage::of(session_->driverPid());
    if (!halvoBefore || !halvoAfter) return std::unexpected("halvo ended while it played.");
    if (!driverBefore || !driverAfter) return std::unexpected("The driver ended while it played.");

    const auto& heard = measured->heard.samples;
    const auto found = std::ranges::search(heard, track_.music.samples);
    report_.flatBitExact = !found.empty();
    if (report_.flatBitExact) report_.addedLatencyFrames = (found.begin() - heard.begin()) / 2;
    report_.halvo = {.cpuPercent = cpuPercent(*halvoBefore, *halvoAfter, duration),
                     .rssMiB = halvoAfter->residentMiB};
    report_.driver = {.cpuPercent = cpuPercent(*driverBefore, *driverAfter, duration),
                      .rssMiB = driverAfter->residentMiB};
    return {};
}

Demo::Outcome Demo::bandRuns() {
    for (std::size_t firstBand = 0; firstBand < kBandStep; ++firstBand)
        for (const float gainDb : {kTestGainDb, -kTestGainDb})
            if (auto outcome = bandRun(firstBand, gainDb); !outcome) return outcome;
    std::ranges::sort(report_.bands, {}, [](const BandMeasurement& band) {
        return std::pair(band.frequencyHz, band.gainDb);
    });
    return {};
}

Demo::Outcome Demo::bandRun(std::size_t firstBand, float gainDb) {
    std::array<float, 10> gains{};
    for (std::size_t band = firstBand; band < gains.size(); band += kBandStep)
        gains[band] = gainDb;
    auto application = startWithGains(gains);
    if (!application) return std::unexpected(application.error());
    const auto measured = playIntoHalvo(track_.sweep);
    if (!measured) return std::unexpected(measured.error());

    const TransferFunction transfer(track_.sweep, measured->heard);
    const ExpectedResponse expected(gains, kSampleRate);
    double worst = 0;
    std::size_t count = 0;
    for (std::size_t band = firstBand; band < gains.size(); band += kBandStep, ++count) {
        report_.bands.push_back(measure(transfer, expected, band, gainDb));
        worst = std::max(worst, report_.bands.back().deviation());
    }
    progress("%zu bands at %+.0f dB: heard within %.2f dB of the formula.", count,
             static_cast<double>(gainDb), worst);
    return (*application)->quit();
}

Demo::Outcome Demo::firstPresetRun() {
    if (const auto failure = removePresetsFile(session_->dataHome()))
        return std::unexpected(*failure);
    auto application = ApplicationRun::start(*session_);
    if (!application) return std::unexpected(application.error());
    const ApplicationBus bus(session_->busSocket());
    const auto measured = playIntoHalvo(track_.sound, [&] {
        report_.activePreset = bus.activePreset();
        std::ranges::transform(report_.bandLevels, bus.bandLevels(), report_.bandLevels.begin(),
                               std::ranges::max);
    });
    if (!measured) return std::unexpected(measured.error());
    if (const auto failure = writeSoundFile(folder_ + "/after.wav", measured->heard))
        return std::unexpected(*failure);
    if (auto outcome = judgeFirstPreset(*measured); !outcome) return outcome;
    return (*application)->quit();
}

Demo::Outcome Demo::judgeFirstPreset(const Measurement& measured) {
    const auto preset = readFirstPreset(session_->dataHome());
    if (!preset) return std::unexpected("halvo has not written its list of factory presets.");
    const ExpectedResponse expected(preset->bands, kSampleRate);
    const TransferFunction transfer(track_.sound, measured.heard);
    for (std::size_t band = 0; band < kBandFrequencies.size(); ++band)
        report_.firstPresetDeviationDb = std::max(report_.firstPresetDeviationDb,
                                                  measure(transfer, expected, band, 0).deviation());
    progress("The first factory preset, \"%s\": heard within %.2f dB of the formula.",
             preset->name.c_str(), report_.firstPresetDeviationDb);
    return {};
}

Demo::Outcome Demo::genreRun() {
    auto tracks = showGenres(*session_);
    if (!tracks) return std::unexpected(tracks.error());
    report_.tracks = std::move(*tracks);
    return {};
}

Demo::Outcome Demo::writeReport() {
    if (const auto failure = writeTextFile(folder_ + "/report.json", report_.json()))
        return std::unexpected(*failure);
    return {};
}

std::expected<Measurement, std::string>
Demo::playIntoHalvo(const StereoSound& sound, const std::function<void()>& whilePlaying) {
    auto result =
        Measurement::make(*session_, sound, MeasurementSession::kVirtualOutput, whilePlaying);
    if (result) {
        report_.underruns += countInterruptions(sound, result->heard);
        report_.repeatedMeasurements += result->repetitions;
    }
    return result;
}

std::expected<std::unique_ptr<ApplicationRun>, std::string>
Demo::startWithGains(std::span<const float> gainsDb) {
    if (const auto failure = writePresetsFile(session_->dataHome(), "Demo", gainsDb))
        return std::unexpected(*failure);
    return ApplicationRun::start(*session_);
}

} // namespace halvo::demo
