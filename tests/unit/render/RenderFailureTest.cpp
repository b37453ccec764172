#include "render/Interruption.h"
#include "unit/render/RenderScene.h"

#include <csignal>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>

namespace halvo::render {
namespace {

namespace fs = std::filesystem;
using testing::ExitedWithCode;
using testing::KilledBySignal;

class RenderFailure : public Scene {
  protected:
    RenderFailure() { options.bypass = true; }
    void writeInput() const { write({noise(2 * 48000, 0.5F), SF_FORMAT_WAV | SF_FORMAT_PCM_16}); }
    /// Fails with this in its sentence and leaves nothing behind.
    void expectFailure(const std::string& part, const EQPreset& preset = {}) {
        const auto before = folder.names();
        EXPECT_NE(failure(preset).find(part), std::string::npos) << part;
        EXPECT_EQ(folder.names(), before) << part;
    }
};

TEST_F(RenderFailure, InputsThatCannotBeRead) {
    writeInput();
    const auto whole = test::contents(folder / "in.wav");
    struct Row {
        const char* contents; ///< what it is
        std::string bytes;
        const char* sentence;
    };
    for (const auto& row :
         {Row{"nothing", "", "it is empty"}, Row{"text", "Dear diary\n", "not a WAV file"},
          Row{"half a header", whole.substr(0, 30), "damaged"},
          Row{"half the sound", whole.substr(0, whole.find("data") + 8 + 96000),
              "cut short: 0.5 s of sound are there"},
          Row{"another kind of sound",
              ".snd" +
                  std::string(
                      "\0\0\0\x18\0\0\0\x08\0\0\0\x03\0\0\xBB\x80\0\0\0\x02\0\0\0\0abcdabcd", 32),
              "not WAV but AU"}}) {
        test::put(folder / "in.wav", row.bytes);
        SCOPED_TRACE(row.contents);
        expectFailure(row.sentence);
    }
    write({.samples = std::vector<float>(600), .channels = 6});
    expectFailure("6 channels");
    write({});
    expectFailure("holds no sound");
    fs::remove(folder / "in.wav");
    expectFailure("No such file");
    fs::create_directory(folder / "in.wav");
    expectFailure("is a folder");
    fs::remove(folder / "in.wav");
    ASSERT_EQ(::mkfifo((folder / "in.wav").c_str(), 0600), 0);
    expectFailure("is not a file"); // and does not wait for a writer
}

TEST_F(RenderFailure, ACutIsSeenInEveryContainer) {
    constexpr int k24 = SF_FORMAT_PCM_24;
    for (const int format : {SF_FORMAT_WAV | k24, SF_FORMAT_WAV | k24 | SF_ENDIAN_BIG,
                             SF_FORMAT_WAVEX | k24, SF_FORMAT_RF64 | k24}) {
        write({noise(2000, 0.5F), format});
        auto bytes = test::contents(folder / "in.wav");
        bytes.resize(bytes.size() - 600);
        if (format == (SF_FORMAT_WAV | k24)) // and behind a chunk of odd length
            bytes.insert(12, std::string("junk\3\0\0\0xyz\0", 12));
        test::put(folder / "in.wav", bytes);
        SCOPED_TRACE(format);
        expectFailure("cut short");
    }
}

TEST_F(RenderFailure, WhatIsThereOfACutInputOnRequest) {
    writeInput();
    const auto whole = test::contents(folder / "in.wav");
    test::put(folder / "in.wav", whole.substr(0, whole.size() - 100'002));
    options.acceptTruncated = true;
    EXPECT_EQ(failure(), "");
    EXPECT_EQ(read().samples.size(), 2U * 48000 - 50'002);
}

TEST_F(RenderFailure, ALengthThatWasNeverKnownIsNoCut) {
    // As programs leave it that write to a pipe.
    writeInput();
    const auto whole = test::contents(folder / "in.wav");
    const auto at = whole.find("data") + 4;
    for (const char* unknown : {"\xFF\xFF\xFF\xFF", "\xFF\xF0\xFF\x7F"}) {
        auto bytes = whole;
        bytes.replace(4, 4, unknown).replace(at, 4, unknown);
        test::put(folder / "in.wav", bytes);
        options.force = true;
        EXPECT_EQ(failure(), "");
        EXPECT_EQ(read().samples.size(), 2U * 48000);
    }
}

TEST_F(RenderFailure, RatesAndBandsThatDoNotFit) {
    options.bypass = false;
    const auto treble = preset(0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 6});
    const auto bass = preset(0, {6, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    // From half the rate on the filter would grow without any sound; between one rate and the next
    // it would be stable, at another frequency.
    for (const int rate : {12000, 22050, 32000}) {
        write({.samples = noise(2000, 0.1F), .rate = rate});
        expectFailure("the band at 16000 Hz needs more", treble);
        options.force = true;
        EXPECT_EQ(failure(bass), "") << rate;
    }
    // Just above, single precision still puts a pole on the far side.
    write({.samples = noise(2000, 0.1F), .rate = 32002});
    expectFailure("the band at 16000 Hz", preset(0, {0, 0, 0, 0, 0, 0, 0, 0, 0, -19}));
    write({.samples = noise(2000, 0.1F), .rate = 44100});
    EXPECT_EQ(failure(treble), "");
    write({.samples = noise(2000, 0.1F), .rate = 384000});
    expectFailure("up to 192000", bass);
}

TEST_F(RenderFailure, OutputsThatCannotBeWritten) {
    writeInput();
    options.output = options.input;
    options.force = true;
    expectFailure("is the input itself");
    fs::create_symlink("in.wav", folder / "link.wav");
    options.output = folder / "link.wav";
    expectFailure("is the input itself");
    options.output = folder.path();
    expectFailure("is a folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    options.output = folder / "pipe";
    expectFailure("is not a file");
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    options.output = folder / "no/such/out.wav";
    expectFailure("make its folder first");
    fs::create_directory(folder / "locked");
    ::chmod((folder / "locked").c_str(), 0500);
    options.output = folder / "locked/out.wav";
    const test::WithoutPrivileges withoutPrivileges;
    expectFailure("Permission denied; choose a folder that is yours");
}

TEST_F(RenderFailure, AnExistingFileIsReplacedOnRequestAlone) {
    writeInput();
    test::put(folder / "old.wav", "old");
    ::chmod((folder / "old.wav").c_str(), 0640);
    fs::create_symlink("old.wav", folder / "out.wav");
    expectFailure("replace it with --force");
    options.force = true;
    EXPECT_EQ(failure(), "");
    EXPECT_TRUE(fs::is_symlink(folder / "out.wav"));
    EXPECT_TRUE(read("old.wav").samples == read("in.wav").samples);
    EXPECT_EQ(test::mode(folder / "old.wav"), 0640U);
}

TEST_F(RenderFailure, WhatAppearsMeanwhileIsKept) {
    writeInput();
    const auto renderWhile = [this](const auto& happens) {
        const auto result = renderFile(options, {}, [&](std::int64_t done, std::int64_t) {
            if (done == 0) happens();
            return true;
        });
        return result ? "" : result.error();
    };
    EXPECT_NE(renderWhile([this] {
                  test::put(folder / "out.wav", "another's");
              }).find("it is there already"),
              std::string::npos);
    EXPECT_TRUE(test::contents(folder / "out.wav") == "another's");
    fs::remove(folder / "out.wav");
    options.force = true;
    EXPECT_NE(renderWhile([this] {
                  (void)::mkfifo((folder / "out.wav").c_str(), 0600);
              }).find("not a file"),
              std::string::npos);
    EXPECT_TRUE(fs::is_fifo(folder / "out.wav"));
    fs::remove(folder / "out.wav");
    EXPECT_NE(
        renderWhile([this] { fs::resize_file(folder / "in.wav", 100'000); }).find("ended early"),
        std::string::npos);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.wav"}));
}

TEST_F(RenderFailure, NoSpaceLeft) {
    test::put(folder / "out.wav", "old");
    options.force = true;
    // The limit on a file's size stands for the disk's; both end in a write that fails: at the
    // header, in the midst, or, where blocks are compressed, when the last one is flushed.
    for (const int encoding : {SF_FORMAT_PCM_16, SF_FORMAT_IMA_ADPCM}) {
        write({noise(2 * 48000, 0.5F), SF_FORMAT_WAV | encoding});
        const auto size = fs::file_size(folder / "in.wav");
        for (const rlim_t limit : {rlim_t{0}, rlim_t{20}, rlim_t{size / 2}, rlim_t{size - 10}}) {
            EXPECT_EXIT(
                {
                    const Interruption interruption; // takes the signal that comes with it
                    rlimit small{};
                    small.rlim_cur = small.rlim_max = limit;
                    (void)::setrlimit(RLIMIT_FSIZE, &small);
                    std::exit(failure().find("cannot write") == std::string::npos ? 1 : 0);
                },
                ExitedWithCode(0), "")
                << limit;
            EXPECT_TRUE(test::contents(folder / "out.wav") == "old");
            EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.wav", "out.wav"}));
        }
    }
}

TEST_F(RenderFailure, SignalsEndTheProcessAndLeaveNothingBehind) {
    writeInput();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                (void)std::signal(signal, SIG_DFL); // who started the tests may ignore it
                const Interruption interruption;
                const auto result =
                    renderFile(options, {}, [&](std::int64_t done, std::int64_t total) {
                        // As late as it can come.
                        if (done == total) std::raise(signal);
                        return interruption.signal() == 0;
                    });
                if (result) std::exit(0);
                Interruption::endBy(interruption.signal());
            },
            KilledBySignal(signal), "");
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.wav"})) << signal;
    }
}

} // namespace
} // namespace halvo::render
