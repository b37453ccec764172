#pragma once

#include "render/Options.h"
#include "render/RenderFile.h"
#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <random>
#include <sndfile.h>
#include <string>
#include <utility>
#include <vector>

namespace halvo::render {

/// A sound file as the library sees it.
struct Sound {
    std::vector<float> samples{};
    int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    int rate = 48000;
    int channels = 2;
};

/// A folder with an input, and what becomes of it.
class Scene : public testing::Test {
  protected:
    Scene() {
        options.input = folder / "in.wav";
        options.output = folder / "out.wav";
    }

    static EQPreset preset(float preamp, std::vector<float> bands = {}) {
        return {UUID::random(), "Test", preamp, std::move(bands), false};
    }

    void write(const Sound& sound, const std::string& name = "in.wav") const {
        SF_INFO info{};
        info.samplerate = sound.rate;
        info.channels = sound.channels;
        info.format = sound.format;
        SNDFILE* file = sf_open((folder / name).c_str(), SFM_WRITE, &info);
        ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
        (void)sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
        (void)sf_set_string(file, SF_STR_TITLE, "A title");
        const auto count = static_cast<sf_count_t>(sound.samples.size());
        EXPECT_EQ(sf_write_float(file, sound.samples.data(), count), count);
        sf_close(file);
    }

    Sound read(const std::string& name = "out.wav") const {
        SF_INFO info{};
        SNDFILE* file = sf_open((folder / name).c_str(), SFM_READ, &info);
        if (file == nullptr) return {};
        Sound sound{{}, info.format & ~SF_FORMAT_ENDMASK, info.samplerate, info.channels};
        sound.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
        (void)sf_read_float(file, sound.samples.data(),
                            static_cast<sf_count_t>(sound.samples.size()));
        const char* title = sf_get_string(file, SF_STR_TITLE);
        EXPECT_STREQ(title == nullptr ? "" : title, "A title");
        sf_close(file);
        return sound;
    }

    /// The sentence about what went wrong; empty when nothing did.
    std::string failure(const EQPreset& preset = {}) {
        const auto result = renderFile(options, preset, [](auto, auto) { return true; });
        if (result) report = *result;
        return result ? "" : result.error();
    }

    static std::vector<float> noise(std::size_t count, float amplitude) {
        std::mt19937 engine(7);
        std::uniform_real_distribution<float> distribution(-amplitude, amplitude);
        std::vector<float> samples(count);
        for (float& sample : samples)
            sample = distribution(engine);
        return samples;
    }

    test::TemporaryDirectory folder;
    Options options;
    RenderReport report;
};

} // namespace halvo::render
