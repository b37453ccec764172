#include "audio/AudioEngine.h"
#include "demo/ExpectedResponse.h"
#include "demo/TransferFunction.h"
#include "fake/FakePlatform.h"
#include "presets/FactoryPresets.h"
#include "render/WavFormat.h"
#include "unit/render/RenderScene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace halvo::render {
namespace {

EQPreset factoryPreset(const std::string& name) {
    const auto presets = defaultPresets();
    return *std::ranges::find(presets, name, &EQPreset::name);
}

/// What the application's output unit is given for this sound, in cycles of `quantum` frames.
std::vector<float> playedLive(const Sound& sound, const EQPreset& preset, std::size_t quantum) {
    FakePlatform fake;
    AudioEngine engine(fake.sharedMemory, fake.outputUnits, fake.mainQueue, fake.standardOutput,
                       [](const std::string&) { return std::nullopt; });
    fake.sharedMemory.createRing(static_cast<std::uint32_t>(sound.rate), 2, 8192);
    engine.start("");
    engine.eq().setBands(preset.bands);
    engine.setCurrentPreset(preset);
    std::vector<float> heard;
    for (auto rest = std::span(sound.samples); !rest.empty();) {
        const auto cycle = rest.first(std::min(rest.size(), 2 * quantum));
        fake.sharedMemory.write(cycle);
        const auto out =
            fake.outputUnits.current->render(static_cast<std::uint32_t>(cycle.size() / 2));
        heard.insert(heard.end(), out.begin(), out.end());
        rest = rest.subspan(cycle.size());
    }
    return heard;
}

using RenderSound = Scene;

TEST_F(RenderSound, IsToTheBitWhatTheApplicationPlays) {
    struct Row {
        const char* preset;
        float preamp;
        float amplitude;
        int rate;
        std::size_t quantum;
    };
    for (const auto& row :
         {Row{"Rock", 0, 1.0F, 48000, 1024}, Row{"Acoustic", -6.5F, 0.5F, 44100, 512},
          Row{"Loudness", 3, 0.9F, 96000, 64}, Row{"Flat", 0, 0.9F, 192000, 1024}}) {
        auto preset = factoryPreset(row.preset);
        preset.preamp = row.preamp;
        const Sound sound{.samples = noise(2 * 10007, row.amplitude), .rate = row.rate};
        write(sound);
        options.force = true;
        ASSERT_EQ(failure(preset), "") << row.preset;
        const auto live = playedLive(sound, preset, row.quantum);
        EXPECT_TRUE(read().samples == live) << row.preset;
    }
}

TEST_F(RenderSound, HasTheResponseOfTheFormula) {
    // An impulse, soft enough not to be clipped, and what rings after it.
    demo::StereoSound impulse(96000);
    impulse.samples[2 * 1000] = impulse.samples[2 * 1000 + 1] = 0.05F;
    write({.samples = impulse.samples});
    const auto preset = factoryPreset("Classic");
    ASSERT_EQ(failure(preset), "");
    EXPECT_EQ(report.clipped, 0);
    demo::StereoSound heard;
    heard.samples = read().samples;
    const demo::TransferFunction measured(impulse, heard);
    const demo::ExpectedResponse formula(preset.bands, demo::kSampleRate);
    for (double frequency = 100; frequency < 23000; frequency *= 1.25) {
        for (const std::size_t channel : {0U, 1U})
            EXPECT_NEAR(measured.decibelsAt(frequency, channel), formula.decibelsAt(frequency),
                        0.01)
                << frequency;
    }
    // Coefficients of single precision leave the formula where the lowest band lies.
    for (const double frequency : {25.0, 32.0, 50.0, 64.0})
        EXPECT_NEAR(measured.decibelsAt(frequency, 0), formula.decibelsAt(frequency), 0.12);
}

TEST_F(RenderSound, MonoIsHeardAsBothSidesOfStereo) {
    const auto mono = noise(9001, 0.9F);
    std::vector<float> stereo;
    for (const float sample : mono)
        stereo.insert(stereo.end(), 2, sample);
    write({.samples = mono, .channels = 1});
    ASSERT_EQ(failure(factoryPreset("Rock")), "");
    const auto clippedInMono = report.clipped;
    const auto heard = read();
    ASSERT_EQ(heard.channels, 1);
    write({.samples = stereo});
    options.force = true;
    ASSERT_EQ(failure(factoryPreset("Rock")), "");
    EXPECT_EQ(report.clipped, 2 * clippedInMono);
    const auto both = read().samples;
    for (std::size_t frame = 0; frame < mono.size(); ++frame)
        ASSERT_EQ(heard.samples[frame], both[2 * frame + 1]) << frame;
}

TEST_F(RenderSound, TellsWhatWasClippedAndHowToAvoidIt) {
    write({.samples = {0.5F, -0.5F, 0.6F, -0.8F, 1.0F, 0.0F}});
    ASSERT_EQ(failure(preset(5.96F)), "");
    EXPECT_EQ(report.clipped, 3);
    EXPECT_EQ(report.remarks(), "3 of 6 samples were clipped; the loudest was 6.0 dB beyond full "
                                "scale, so that much less --preamp avoids it\n");
    // Full scale itself is not clipped, even beside what is.
    write({.samples = {1.0F, -1.0F, 1.5F, 0.0F}});
    options.force = true;
    ASSERT_EQ(failure(preset(0)), "");
    EXPECT_EQ(report.clipped, 1);
    write({.samples = {1.0F, -1.0F}});
    ASSERT_EQ(failure(preset(0)), "");
    EXPECT_EQ(report.remarks(), "");
}

TEST_F(RenderSound, WhatIsNotANumberBecomesSilenceAndHarmsNothingElse) {
    auto samples = noise(20000, 0.1F);
    const auto healthy = [&] {
        auto silenced = samples;
        silenced[5000] = silenced[5001] = 0;
        return silenced;
    }();
    samples[5000] = std::numeric_limits<float>::quiet_NaN();
    samples[5001] = -std::numeric_limits<float>::infinity();
    write({.samples = samples});
    ASSERT_EQ(failure(factoryPreset("Rock")), "");
    EXPECT_EQ(report.notFinite, 2);
    EXPECT_TRUE(read().samples == playedLive({.samples = healthy}, factoryPreset("Rock"), 1024));
}

struct FormatRow {
    const char* name;
    int format;
    int channels = 2;
    int rate = 48000;
};

TEST_F(RenderSound, EveryFormatComesOutAsItWentIn) {
    // What is written here goes through the library's own rounding; what counts is the second file.
    for (const auto& row :
         {FormatRow{"8 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 2, 44100},
          FormatRow{"16 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 96000},
          FormatRow{"24 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_24},
          FormatRow{"24 bits, big-endian", SF_FORMAT_WAV | SF_FORMAT_PCM_24 | SF_ENDIAN_BIG},
          FormatRow{"32 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 1},
          FormatRow{"float, extensible", SF_FORMAT_WAVEX | SF_FORMAT_FLOAT, 2, 192000},
          FormatRow{"double", SF_FORMAT_WAV | SF_FORMAT_DOUBLE},
          FormatRow{"16 bits, 64-bit lengths", SF_FORMAT_RF64 | SF_FORMAT_PCM_16},
          FormatRow{"mu-law", SF_FORMAT_WAV | SF_FORMAT_ULAW, 1, 8000},
          FormatRow{"A-law", SF_FORMAT_WAV | SF_FORMAT_ALAW}}) {
        write({noise(30002, 1.0F), row.format, row.rate, row.channels});
        options.bypass = options.force = true;
        ASSERT_EQ(failure(), "") << row.name;
        const auto in = read("in.wav");
        const auto out = read();
        EXPECT_EQ(out.format, in.format) << row.name;
        EXPECT_EQ(out.rate, row.rate) << row.name;
        EXPECT_EQ(out.channels, row.channels) << row.name;
        EXPECT_TRUE(out.samples == in.samples) << row.name;
    }
}

TEST_F(RenderSound, LossyFormatsStayOfTheirKind) {
    for (const int encoding : {SF_FORMAT_IMA_ADPCM, SF_FORMAT_MS_ADPCM}) {
        write({std::vector<float>(40000, 0.25F), SF_FORMAT_WAV | encoding, 8000, 1});
        options.bypass = options.force = true;
        ASSERT_EQ(failure(), "") << encoding;
        const auto out = read();
        EXPECT_EQ(out.format, SF_FORMAT_WAV | encoding);
        ASSERT_GE(out.samples.size(), 40000U) << encoding;
        EXPECT_NEAR(out.samples[20000], 0.25F, 0.02F) << encoding;
    }
}

TEST_F(RenderSound, RoundsAndHoldsAtTheEnds) {
    write({{0.25F, 1.0F, -1.0F, 0.0F}, SF_FORMAT_WAV | SF_FORMAT_PCM_16});
    ASSERT_EQ(failure(preset(-12)), ""); // a quarter and a little
    const auto out = read().samples;
    EXPECT_EQ(out[0] * 32768, std::round(8192 * std::pow(10.0F, -0.6F)));
    // The largest 32-bit integer is no float; the nearest one would wrap around.
    write({{1.0F, -1.0F}, SF_FORMAT_WAV | SF_FORMAT_PCM_32});
    options.force = options.bypass = true;
    ASSERT_EQ(failure(), "");
    EXPECT_NEAR(read().samples[0], 1.0F, 1e-6F);
    EXPECT_EQ(read().samples[1], -1.0F);
}

TEST_F(RenderSound, FloatsOnRequestAndLongSoundInAContainerThatHoldsIt) {
    write({noise(2000, 0.5F), SF_FORMAT_WAV | SF_FORMAT_PCM_16});
    options.writeFloat = options.bypass = true;
    ASSERT_EQ(failure(), "");
    EXPECT_EQ(read().format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    EXPECT_TRUE(read().samples == read("in.wav").samples);

    constexpr int k16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    constexpr std::int64_t kSamples = INT64_C(2'100'000'000);
    EXPECT_EQ(outputFormatFor(k16, false, kSamples), k16);
    EXPECT_EQ(outputFormatFor(k16, true, kSamples), SF_FORMAT_RF64 | SF_FORMAT_FLOAT);
}

TEST_F(RenderSound, TheSameFileEveryTime) {
    write({.samples = noise(2000, 0.5F)});
    ASSERT_EQ(failure(factoryPreset("Pop")), "");
    const auto first = test::contents(folder / "out.wav");
    EXPECT_EQ(first.find("PEAK"), std::string::npos) << "the chunk holds the time of writing";
}

} // namespace
} // namespace halvo::render
