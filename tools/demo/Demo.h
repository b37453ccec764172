#pragma once

#include "ApplicationRun.h"
#include "DemoTrack.h"
#include "Measurement.h"
#include "Report.h"

#include <expected>
#include <functional>
#include <span>
#include <string>

namespace halvo::demo {

/// The whole demonstration: several runs of the real application in one private session, each with
/// another preset, and what they measured. One thread.
class Demo {
  public:
    /// The results go into `folder`, which is made if need be.
    explicit Demo(std::string folder) : folder_(std::move(folder)) {}

    /// Everything measured and written; else a sentence about the step that failed.
    std::expected<Report, std::string> run();

  private:
    using Outcome = std::expected<void, std::string>;

    Outcome prepare();
    Outcome straightRun();
    Outcome flatRun();
    Outcome measureStart(ApplicationRun& application, session::Recorder& speakers);
    Outcome playFlat(ApplicationRun& application);
    Outcome bandRuns();
    Outcome bandRun(std::size_t firstBand, float gainDb);
    Outcome firstPresetRun();
    Outcome judgeFirstPreset(const Measurement& measured);
    Outcome genreRun();
    Outcome writeReport();

    /// Plays into the virtual output; interruptions and repetitions go into the report.
    std::expected<Measurement, std::string>
    playIntoHalvo(const StereoSound& sound, const std::function<void()>& whilePlaying = [] {});
    /// Starts the application on a preset with these gains; ready when sound can flow.
    std::expected<std::unique_ptr<ApplicationRun>, std::string>
    startWithGains(std::span<const float> gainsDb);

    std::string folder_;
    DemoTrack track_;
    std::unique_ptr<MeasurementSession> session_;
    Report report_;
};

} // namespace halvo::demo
