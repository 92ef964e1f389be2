#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>

namespace Morvane::Worker {
namespace {

using namespace Tests;

/// Sound by ffmpeg: `channels` channels of noise from 0 to 1 in volume, different in each, `samples` long.
void makeSound(const std::string& path, const std::string& codec, int rate, const std::string& layout,
               int channels, int samples) {
    std::string expressions;
    for (int channel = 0; channel < channels; ++channel) {
        expressions += fmt::format("{}{:.2f}*sin(0.05*{}*n)+0.05*cos(0.7*n)", channel == 0 ? "" : "|",
                                   0.9 / (channel + 1), channel + 1);
    }
    outputOf({"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
              fmt::format("aevalsrc=exprs='{}':s={}:c={}", expressions, rate, layout), "-af",
              fmt::format("atrim=end_sample={}", samples), "-c:a", codec, path});
}

/// A 16-bit mono file that is silent but for full-scale samples at the given places.
void makeImpulses(const std::string& path, int rate, int samples, const std::vector<int>& impulses) {
    std::vector<std::int16_t> values(static_cast<std::size_t>(samples));
    for (const int impulse : impulses) {
        values.at(static_cast<std::size_t>(impulse)) = 16384;
    }
    {
        std::ofstream raw(path + ".raw", std::ios::binary);
        raw.write(reinterpret_cast<const char*>(values.data()),
                  static_cast<std::streamsize>(values.size() * sizeof(std::int16_t)));
    }
    outputOf({"ffmpeg", "-v", "error", "-y", "-f", "s16le", "-ar", std::to_string(rate), "-ac", "1", "-i",
              path + ".raw", path});
}

std::vector<int> impulsesIn(const std::vector<float>& sound) {
    std::vector<int> found;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        if (std::fabs(sound[i]) > 0.25) {
            found.push_back(static_cast<int>(i));
        }
    }
    return found;
}

struct Form {
    const char* codec;
    int rate;
    const char* layout;
    int channels;
    const char* stored;  ///< ffprobe's name of the track's codec
    int bits;
};

class MovieSoundFormTest : public testing::TestWithParam<Form> {};

TEST_P(MovieSoundFormTest, EveryReaderGetsTheSourcesSamplesBitForBit) {
    const Form form = GetParam();
    TestFolder folder;
    const std::string source = folder.file("source.wav");
    const std::string path = folder.file("sound.mov");
    const int samples = form.rate / 2 + 17;
    makeSound(source, form.codec, form.rate, form.layout, form.channels, samples);

    writeMovie(path, TestPackets(tinyFrames(24)), {}, {},
               [&](MovieFile& movie) { movie.addAudioFile(source, 0); });

    ASSERT_EQ(problemsOf(path), "");
    const std::vector<float> expected = soundByFfmpeg(source);
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(samples * form.channels));
    EXPECT_TRUE(soundByFfmpeg(path) == expected);
    EXPECT_TRUE(soundByGstreamer(path, form.channels) == expected);
    const nlohmann::json probed = ffprobe(path);
    const nlohmann::json& stream = probed.at("streams").at(1);
    EXPECT_EQ(stream.at("codec_name"), form.stored);
    EXPECT_EQ(stream.at("channel_layout"), form.layout);
    EXPECT_EQ(stream.at("sample_rate"), std::to_string(form.rate));
    EXPECT_EQ(stream.at("duration_ts"), samples);
    const nlohmann::json info = mediainfo(path);
    EXPECT_EQ(info.at(2).at("SamplingRate"), std::to_string(form.rate));
    EXPECT_EQ(info.at(2).at("Channels"), std::to_string(form.channels));
    EXPECT_EQ(info.at(2).at("BitDepth"), std::to_string(form.bits));
}

constexpr Form forms[] = {
    {"pcm_u8", 44100, "mono", 1, "pcm_s16be", 16},    {"pcm_s16le", 44100, "stereo", 2, "pcm_s16be", 16},
    {"pcm_s24le", 48000, "5.1", 6, "pcm_s24be", 24},  {"pcm_s32le", 48000, "stereo", 2, "pcm_s32be", 32},
    {"pcm_f32le", 48000, "7.1", 8, "pcm_f32be", 32},  {"pcm_f64le", 48000, "stereo", 2, "pcm_f64be", 64},
    {"pcm_s16le", 88200, "7.1", 8, "pcm_s16be", 16},  {"pcm_s24le", 96000, "stereo", 2, "pcm_s24be", 24},
    {"pcm_f32le", 192000, "5.1", 6, "pcm_f32be", 32}, {"pcm_s24le", 48000, "quad", 4, "pcm_s24be", 24},
    {"pcm_s16le", 176400, "3.0", 3, "pcm_s16be", 16},
};

INSTANTIATE_TEST_SUITE_P(Forms, MovieSoundFormTest, testing::ValuesIn(forms), [](const auto& parameter) {
    std::string name =
        fmt::format("{}_{}_{}", parameter.param.codec, parameter.param.rate, parameter.param.layout);
    for (char& character : name) {
        character = character == '.' ? '_' : character;
    }
    return name;
});

struct Offset {
    const char* name;
    double seconds;
    int rate;
    int expected;  ///< sample of the movie at which the source's sample 24,000 lies
};

class MovieSoundOffsetTest : public testing::TestWithParam<Offset> {};

TEST_P(MovieSoundOffsetTest, ImpulsesLieAtTheExactSampleForEveryReader) {
    const Offset offset = GetParam();
    TestFolder folder;
    const std::string source = folder.file("impulses.wav");
    const std::string path = folder.file("sound.mov");
    makeImpulses(source, offset.rate, 60000, {24000, 24001, 59999});

    for (const bool inPlace : {false, true}) {
        writeMovie(path, TestPackets(tinyFrames(24, {24000, 1001})), {true, inPlace}, {},
                   [&](MovieFile& movie) { movie.addAudioFile(source, offset.seconds); });

        ASSERT_EQ(problemsOf(path), "");
        const std::vector<int> expected = {offset.expected, offset.expected + 1, offset.expected + 35999};
        EXPECT_EQ(impulsesIn(soundByFfmpeg(path)), expected);
        EXPECT_EQ(impulsesIn(soundByGstreamer(path, 1)), expected);
        const nlohmann::json probed = ffprobe(path);
        EXPECT_EQ(probed.at("streams").at(1).at("start_pts"), 0);
        const nlohmann::json info = mediainfo(path);
        // MediaInfo knows durations to the millisecond only.
        EXPECT_NEAR(std::stod(info.at(2).at("Duration").get<std::string>()),
                    static_cast<double>(offset.expected + 36000) / offset.rate, 0.001);
    }
}

constexpr Offset offsets[] = {
    {"none", 0, 48000, 24000},
    {"half_a_second_later", 0.5, 48000, 48000},
    {"half_a_second_later_at_44100", 0.5, 44100, 46050},
    {"a_quarter_of_a_second_dropped", -0.25, 48000, 12000},
    {"twelve_frames_at_23_976", 12 * 1001.0 / 24000, 48000, 48024},
    {"twelve_frames_at_23_976_as_a_float_of_six_digits", 0.5005, 48000, 48024},
    {"one_sample_later", 1.0 / 48000, 48000, 24001},
    {"all_before_the_first_impulse_dropped", -0.5, 48000, 0},
    {"at_96000", 0.25, 96000, 48000},
};

INSTANTIATE_TEST_SUITE_P(Offsets, MovieSoundOffsetTest, testing::ValuesIn(offsets),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

class MovieSoundCodecTest : public testing::TestWithParam<const char*> {};

TEST_P(MovieSoundCodecTest, CompressedSoundIsTheReadersOwnDecoding) {
    TestFolder folder;
    const std::string wave = folder.file("source.wav");
    const std::string source = folder.file(std::string("source.") + GetParam());
    const std::string path = folder.file("sound.mov");
    makeSound(wave, "pcm_s16le", 48000, "stereo", 2, 50000);
    outputOf({"ffmpeg", "-v", "error", "-y", "-i", wave, "-strict", "-2", source});

    writeMovie(path, TestPackets(tinyFrames(24)), {}, {},
               [&](MovieFile& movie) { movie.addAudioFile(source, 0); });

    ASSERT_EQ(problemsOf(path), "");
    const std::vector<float> expected = soundByFfmpeg(source);
    EXPECT_GE(expected.size(), 2 * 50000U);
    EXPECT_TRUE(soundByFfmpeg(path) == expected);
}

INSTANTIATE_TEST_SUITE_P(Codecs, MovieSoundCodecTest,
                         testing::Values("flac", "mp3", "m4a", "ogg", "opus", "aiff", "wv", "caf", "ac3",
                                         "mka"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST(MovieSoundTest, SoundMayBeLongerThanThePictures) {
    TestFolder folder;
    const std::string source = folder.file("long.wav");
    makeSound(source, "pcm_s16le", 48000, "stereo", 2, 48000 * 3 + 5);

    writeMovie(folder.file("a.mov"), TestPackets(tinyFrames(24)), {}, {{}, TimecodeTrack{24, 0, ""}, {}},
               [&](MovieFile& movie) { movie.addAudioFile(source, 0); });

    ASSERT_EQ(problemsOf(folder.file("a.mov")), "");
    EXPECT_EQ(soundByFfmpeg(folder.file("a.mov")).size(), 2U * (48000 * 3 + 5));
    const nlohmann::json info = mediainfo(folder.file("a.mov"));
    EXPECT_EQ(info.at(1).at("FrameCount"), "24");
}

TEST(MovieSoundTest, TheSoundOfAMovieKeepsItsDelay) {
    TestFolder folder;
    const std::string wave = folder.file("impulses.wav");
    const std::string source = folder.file("source.mov");
    makeImpulses(wave, 48000, 4000, {1000});
    // A movie whose sound begins 100 ms after its pictures.
    outputOf({"ffmpeg",     "-v",    "error", "-y",        "-f",   "lavfi", "-i",   "color=s=32x32:d=1:r=25",
              "-itsoffset", "0.1",   "-i",    wave,        "-map", "0",     "-map", "1",
              "-c:v",       "mjpeg", "-c:a",  "pcm_s16le", source});

    writeMovie(folder.file("a.mov"), TestPackets(tinyFrames(24)), {}, {},
               [&](MovieFile& movie) { movie.addAudioFile(source, 0); });

    EXPECT_EQ(impulsesIn(soundByFfmpeg(folder.file("a.mov"))), std::vector<int>{4800 + 1000});
}

TEST(MovieSoundTest, APathWithAColonIsAFile) {
    TestFolder folder;
    const std::string source = folder.file("a:b.wav");
    makeSound(folder.file("source.wav"), "pcm_s16le", 48000, "mono", 1, 1000);
    std::filesystem::rename(folder.file("source.wav"), source);

    writeMovie(folder.file("a.mov"), TestPackets(tinyFrames(2)), {}, {},
               [&](MovieFile& movie) { movie.addAudioFile(source, 0); });

    EXPECT_EQ(soundByFfmpeg(folder.file("a.mov")).size(), 1000U);
}

class MovieSoundRefusalTest : public testing::Test {
protected:
    MovieSoundRefusalTest() : packets(tinyFrames(2)), path(folder.file("a.mov")) {}

    /// What adding fails with; the movie must be whole and silent all the same.
    Status statusOfAdding(const std::string& source, double offset) {
        Status status = Status::Success;
        writeMovie(path, packets, {}, {},
                   [&](MovieFile& movie) { status = statusOf([&] { movie.addAudioFile(source, offset); }); });
        EXPECT_EQ(problemsOf(path), "");
        EXPECT_EQ(walkMovie(path).track("soun"), nullptr);
        return status;
    }

    TestFolder folder;
    TestPackets packets;
    std::string path;
};

TEST_F(MovieSoundRefusalTest, AFileThatIsNoSound) {
    std::ofstream(folder.file("text.wav")) << "This is no sound at all, just a line of text.\n";

    EXPECT_EQ(statusOfAdding(folder.file("text.wav"), 0), Status::BadArgument);
}

TEST_F(MovieSoundRefusalTest, AMovieWithoutSound) {
    writeMovie(folder.file("silent.mov"), packets);

    EXPECT_EQ(statusOfAdding(folder.file("silent.mov"), 0), Status::BadArgument);
}

TEST_F(MovieSoundRefusalTest, AFileThatIsNotThere) {
    EXPECT_EQ(statusOfAdding(folder.file("none.wav"), 0), Status::NotFound);
    EXPECT_EQ(statusOfAdding("", 0), Status::NotFound);
}

TEST_F(MovieSoundRefusalTest, AnOffsetThatLeavesNothing) {
    makeSound(folder.file("short.wav"), "pcm_s16le", 48000, "mono", 1, 4800);

    EXPECT_EQ(statusOfAdding(folder.file("short.wav"), -0.1), Status::BadArgument);
    EXPECT_EQ(statusOfAdding(folder.file("short.wav"), -5), Status::BadArgument);
}

TEST_F(MovieSoundRefusalTest, AnOffsetThatIsNoneOrBeyondADay) {
    makeSound(folder.file("short.wav"), "pcm_s16le", 48000, "mono", 1, 4800);

    EXPECT_EQ(statusOfAdding(folder.file("short.wav"), std::nan("")), Status::BadArgument);
    EXPECT_EQ(statusOfAdding(folder.file("short.wav"), HUGE_VAL), Status::BadArgument);
    EXPECT_EQ(statusOfAdding(folder.file("short.wav"), 90000), Status::BadArgument);
}

TEST_F(MovieSoundRefusalTest, TheSoundOfAMovieThatBeginsMoreThanADayAfterItsPictures) {
    const std::string source = folder.file("source.mov");
    makeSound(folder.file("short.wav"), "pcm_s16le", 8000, "mono", 1, 800);
    outputOf({"ffmpeg",     "-v",    "error", "-y",
              "-f",         "lavfi", "-i",    "color=s=32x32:d=1:r=25",
              "-itsoffset", "90000", "-i",    folder.file("short.wav"),
              "-map",       "0",     "-map",  "1",
              "-c:v",       "mjpeg", "-c:a",  "pcm_s16le",
              source});

    EXPECT_EQ(statusOfAdding(source, 0), Status::BadArgument);
}

class PositionedSoundTest : public testing::Test {
protected:
    PositionedSoundTest() : packets(tinyFrames(24)), path(folder.file("a.mov")) {}

    void write(const std::function<void(MovieFile&)>& more) {
        writeMovie(path, packets, {}, {}, more);
        ASSERT_EQ(problemsOf(path), "");
    }

    template <typename Value>
    static const std::byte* bytes(const std::vector<Value>& values) {
        return reinterpret_cast<const std::byte*>(values.data());
    }

    TestFolder folder;
    TestPackets packets;
    std::string path;
};

TEST_F(PositionedSoundTest, BlocksInAnyOrderAreJoinedAndGapsAreSilent) {
    const std::vector<float> first = {0.5F, -0.25F, 0.125F};
    const std::vector<float> later(30000, 0.75F);

    write([&](MovieFile& movie) {
        movie.setSampleFormat({1, true, 48000, ""});
        movie.addSamples(40000, 30000, bytes(later));
        movie.addSamples(2, 3, bytes(first));
        movie.finishSamples();
    });

    std::vector<float> expected(70000);
    std::copy(first.begin(), first.end(), expected.begin() + 2);
    std::copy(later.begin(), later.end(), expected.begin() + 40000);
    EXPECT_TRUE(soundByFfmpeg(path) == expected);
    EXPECT_TRUE(soundByGstreamer(path, 1) == expected);
}

TEST_F(PositionedSoundTest, ThirtyTwoBitIntegersAndSixteenBitPairsAreExact) {
    const std::vector<std::int32_t> integers = {1 << 30, -(1 << 29), 256, 0};
    const std::vector<std::int16_t> pairs = {16384, -8192, 1, -1};

    write([&](MovieFile& movie) {
        movie.setSampleFormat({1, false, 44100, "mono"});
        movie.addSamples(0, 4, bytes(integers));
        movie.setSampleFormat({2, false, 48000, "stereo"});  // ends the track before
        movie.addSamples(0, 2, bytes(pairs));
    });

    EXPECT_EQ(soundByFfmpeg(path), (std::vector<float>{0.5F, -0.25F, 256 / 2147483648.0F, 0}));
    EXPECT_EQ(walkMovie(path).tracks.size(), 3U);
    const nlohmann::json probed = ffprobe(path);
    EXPECT_EQ(probed.at("streams").at(2).at("channel_layout"), "stereo");
    EXPECT_EQ(outputOf({"ffmpeg", "-v", "error", "-i", path, "-map", "0:a:1", "-f", "s16le", "-"}),
              std::string(reinterpret_cast<const char*>(pairs.data()), 8));
}

TEST_F(PositionedSoundTest, OverlapsAndImpossiblePositionsAreRefused) {
    const std::vector<float> samples(100, 0.5F);

    write([&](MovieFile& movie) {
        EXPECT_EQ(statusOf([&] { movie.addSamples(0, 1, bytes(samples)); }), Status::BadArgument);
        movie.setSampleFormat({1, true, 48000, ""});
        movie.addSamples(100, 100, bytes(samples));
        EXPECT_EQ(statusOf([&] { movie.addSamples(199, 10, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(50, 51, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(100, 1, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(-1, 1, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(0, -1, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(INT64_MAX, 1, bytes(samples)); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.addSamples(1, INT64_MAX, bytes(samples)); }), Status::BadArgument);
        movie.addSamples(200, 100, bytes(samples));
        movie.addSamples(0, 100, bytes(samples));
    });

    EXPECT_EQ(soundByFfmpeg(path), std::vector<float>(300, 0.5F));
}

TEST_F(PositionedSoundTest, AFormatWithoutSamplesMakesNoTrack) {
    write([&](MovieFile& movie) {
        movie.setSampleFormat({1, true, 48000, ""});
        movie.addSamples(0, 0, nullptr);
        movie.finishSamples();
    });

    EXPECT_EQ(walkMovie(path).tracks.size(), 1U);
}

}  // namespace
}  // namespace Morvane::Worker
