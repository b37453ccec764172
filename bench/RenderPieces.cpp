#include "RenderPieces.h"

#include "LimitKernel.h"
#include "audio/SampleMath.h"

#include <algorithm>
#include <array>
#include <random>

namespace halvo::bench {

namespace {

using Form = BiquadCascade::Form;
using Piece = RenderPieces::Piece;

constexpr std::array<float, kBandCount> kGains{5, 4, 3, 1.5F, -0.5F, -1, 0.5F, 2.5F, 3.5F, 4};
constexpr float kPreamp = -6; // dB
constexpr float kVolume = 0.8F;

std::span<float> stereo(float* samples, std::int64_t frames) {
    return {samples, static_cast<std::size_t>(frames * 2)};
}

} // namespace

RenderPieces::RenderPieces()
    : engine_(platform_.sharedMemory, platform_.outputUnits, platform_.mainQueue,
              platform_.standardOutput, [this](const std::string& uid) {
                  return platform_.audioHardware.deviceForUID(uid);
              }) {
    platform_.sharedMemory.createRing(48000, 2, 8192);
    engine_.start("");
    engine_.setCurrentPreset(EQPreset{UUID::random(), "Bench", kPreamp, {}, false});
    engine_.setOutputVolume(kVolume);
    engine_.eq().setBands(kGains);
    equalizer_.setBands(kGains);
    coefficients_ = equalizer_.coefficients();
}

std::span<const Piece> RenderPieces::cascades() {
    static constexpr Piece pieces[] = {
        {"limit", [](RenderPieces& self, float*,
                     std::int64_t frames) { self.limit_ = runRecurrence(self.limit_, frames); }},
        {"plain",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             self.plain_.process(samples, frames, self.coefficients_);
         }},
        {"fourLanes",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             self.fourLanes_.process({samples, frames, 2}, self.coefficients_);
         }},
        {"eightLanes",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             self.eightLanes_.process({samples, frames, 2}, self.coefficients_);
         },
         [] { return BiquadCascade::canRun(Form::EightLanes); }},
    };
    return pieces;
}

std::span<const Piece> RenderPieces::stages() {
    static constexpr Piece pieces[] = {
        {"preamp", [](RenderPieces&, float* samples,
                      std::int64_t frames) { scaleSamples(stereo(samples, frames), 0.501187F); }},
        {"equalizer", [](RenderPieces& self, float* samples,
                         std::int64_t frames) { self.equalizer_.process(samples, frames); }},
        {"softClip", [](RenderPieces&, float* samples,
                        std::int64_t frames) { softClip(stereo(samples, frames)); }},
        {"peak",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             self.meter_.rawPeak.set(maximumMagnitude(stereo(samples, frames)));
         }},
        {"meter", [](RenderPieces& self, float* samples,
                     std::int64_t frames) { self.meter_.captureAmplitude(samples, frames, 2); }},
        {"spectrum", [](RenderPieces& self, float* samples,
                        std::int64_t frames) { self.spectrum_.feed({samples, frames, 2}, 48000); }},
        {"volume", [](RenderPieces&, float* samples,
                      std::int64_t frames) { scaleSamples(stereo(samples, frames), kVolume); }},
    };
    return pieces;
}

std::span<const Piece> RenderPieces::wholes() {
    static constexpr Piece pieces[] = {
        {"processBuffer",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             self.engine_.processBuffer(samples, frames, 2);
         }},
        {"plainProcessBuffer",
         [](RenderPieces& self, float* samples, std::int64_t frames) {
             for (const auto& stage : stages()) {
                 if (std::string_view(stage.name) == "equalizer") {
                     self.plain_.process(samples, frames, self.coefficients_);
                 } else {
                     stage.run(self, samples, frames);
                 }
             }
         }},
    };
    return pieces;
}

std::vector<float> RenderPieces::noise(std::int64_t frameCount) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> sample(-0.1F, 0.1F);
    std::vector<float> result(static_cast<std::size_t>(frameCount) * 2);
    std::ranges::generate(result, [&] { return sample(random); });
    return result;
}

const char* RenderPieces::nameOf(Form form) {
    return form == Form::EightLanes ? "eightLanes" : "fourLanes";
}

const Piece& RenderPieces::transform() {
    static constexpr Piece piece{
        "fft", [](RenderPieces& self, float* samples, std::int64_t frames) {
            for (std::int64_t at = 0; at < frames; at += std::int64_t{RealFFT::kSize}) {
                // The copies count too; without them the numbers would grow from run to run.
                std::copy_n(samples + at, RealFFT::kHalf, self.real_.begin());
                std::copy_n(samples + at, RealFFT::kHalf, self.imaginary_.begin());
                self.fft_.transform(self.real_, self.imaginary_);
            }
        }};
    return piece;
}

} // namespace halvo::bench
