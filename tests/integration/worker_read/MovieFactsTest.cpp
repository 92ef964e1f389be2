#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>

#include "property/PropertyList.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/real_worker/RawController.h"
#include "tests/integration/worker_read/ReaderFixture.h"
#include "timecode/Timecode.h"

namespace Morvane::Testing {
namespace {

/// What the reader says about a movie.
class MovieFactsTest : public ReaderFixture {
protected:
    std::map<std::string, std::string> properties() {
        Property::PropertyList list;
        sut->getProperties(list);
        std::map<std::string, std::string> texts;
        for (const auto& property : list)
            texts[property->name] = property->toString();
        return texts;
    }
};

TEST_F(MovieFactsTest, DescribesPicturesAndRate) {
    open(makeMovie("a.mov", 7, {"-vf", "setsar=4/3", "-r", "24000/1001", "-c:v", "prores_ks"}));

    const MovieInfo movie = info();

    EXPECT_EQ(movie.width, 160);
    EXPECT_EQ(movie.height, 96);
    EXPECT_EQ(movie.channels, 3);
    EXPECT_FLOAT_EQ(movie.rate, 23.976f);
    EXPECT_EQ(movie.aspectNumerator, 4);
    EXPECT_EQ(movie.aspectDenominator, 3);
    EXPECT_EQ(movie.frames, 7);
    EXPECT_EQ(movie.bits, 10);
}

TEST_F(MovieFactsTest, CountsAlphaAsAChannel) {
    open(makeMovie("a.mov", 1, {"-c:v", "png", "-pix_fmt", "rgba64be"}));

    EXPECT_EQ(info().channels, 4);
    EXPECT_EQ(info().bits, 16);
    EXPECT_EQ(metadata()["quicktime/alpha"], "straight");
}

TEST_F(MovieFactsTest, TurnsThePixelAspectWithThePicture) {
    makeMovie("a.mov", 1, {"-vf", "setsar=4/3", "-c:v", "mjpeg"});
    runFfmpeg({"-i", path("a.mov"), "-c", "copy", "-metadata:s:v:0", "rotate=90", path("turned.mov")});
    open(path("turned.mov"));

    EXPECT_EQ(info().width, 96);
    EXPECT_EQ(info().aspectNumerator, 3);
    EXPECT_EQ(info().aspectDenominator, 4);
}

TEST_F(MovieFactsTest, DescribesAMovieThatIsOpenForThatOnly) {
    open(makeMovie("a.mov", 5, {"-c:v", "mjpeg"}), 0);

    EXPECT_EQ(openStatus, 0);
    EXPECT_EQ(info().frames, 5);
    EXPECT_TRUE(read(0).empty());
    EXPECT_EQ(readStatus, -50);
}

TEST_F(MovieFactsTest, KnowsTimeCodeReelAndCodec) {
    open(makeMovie(
        "a.mov", 3,
        {"-c:v", "prores_ks", "-timecode", "10:11:12:13", "-metadata:s:v:0", "reel_name=A001C002"}));

    auto known = metadata();

    EXPECT_EQ(known["input/timecode"], "10:11:12:13");
    EXPECT_EQ(known["quicktime/reel"], "A001C002");
    EXPECT_EQ(known["input/frame_rate"], "25");
    EXPECT_EQ(known["quicktime/codec_id"], "apch");
    EXPECT_FALSE(known["quicktime/codec_name"].empty());
    EXPECT_FALSE(known["quicktime/encoder"].empty());
    EXPECT_EQ(known["quicktime/alpha"], "none");
}

/// Time codes count whole frames a second, and not every maker rounds a rate alike.
TEST_F(MovieFactsTest, CountsTimeCodesAtTheTracksOwnRate) {
    const struct {
        const char* rate;
        const char* counted;
        const char* start;
    } kinds[] = {{"25/2", "13", "01:00:00:12"},
                 {"24000/1001", "24", "01:00:00:23"},
                 {"48000/1001", "48", "01:00:00:47"},
                 {"120000/1001", "120", "01:00:00:119"}};
    for (const auto& kind : kinds) {
        open(makeMovie(
            "a.mov", 3,
            {"-r", kind.rate, "-c:v", "mjpeg", "-timecode", kind.start, "-video_track_timescale", "120000"}));
        auto known = metadata();
        EXPECT_EQ(known["input/timecode"], kind.start);
        EXPECT_EQ(known["quicktime/timecode_rate"], kind.counted) << kind.rate;
        EXPECT_EQ(properties()["track/2/meta/timecode"], kind.start);
    }
}

TEST_F(MovieFactsTest, KnowsTheTimeCodesThatTheWriterWrites) {
    const struct {
        float rate;
        Timecode::FrameRate counted;
        const char* start;
    } kinds[] = {{12.5f, Timecode::FrameRate(12, false), "10:11:12:11"},
                 {47.952f, Timecode::FrameRate(47, false), "10:11:12:46"},
                 {119.88f, Timecode::FrameRate(119, false), "10:11:12:118"},
                 {59.94f, Timecode::FrameRate(60, true), "10:11:12:59"}};
    for (const auto& kind : kinds) {
        {
            QuickTime::QuickTimeCodecWriterIPCController writer(newBridgeName());
            writer.codecList();
            writer.setCodec(0);
            const std::vector<float> pixels(16 * 16 * 4);
            writer.configure(16, 16, 1, 4, false, "", kind.rate);
            ASSERT_EQ(writer.openFile(path("a.mov"), 1), 0);
            ASSERT_EQ(writer.addFrame(1, reinterpret_cast<const char*>(pixels.data()), false), 0);
            writer.finishVideo();
            ASSERT_EQ(Timecode::toFrameRateCode(kind.rate).frameRateCode, kind.counted.frameRateCode);
            writer.addTimecodeTrack(kind.counted,
                                    parseTimecode(kind.start, kind.counted, Timecode::Mode::NonDrop), "REEL");
            ASSERT_EQ(writer.closeFile(true), 0);
        }
        open(path("a.mov"));
        auto known = metadata();
        EXPECT_EQ(known["input/timecode"], kind.start) << kind.rate;
        EXPECT_EQ(known["quicktime/timecode_rate"], std::to_string(kind.counted.nominalRate()));
        EXPECT_EQ(known["timecode"], kind.start);
    }
}

TEST_F(MovieFactsTest, KeepsDropFrameTimeCodes) {
    open(makeMovie("a.mov", 3, {"-r", "30000/1001", "-c:v", "mjpeg", "-timecode", "01:09:59;29"}));

    auto known = metadata();

    EXPECT_EQ(known["input/timecode"], "01:09:59;29");
    EXPECT_EQ(known["quicktime/timecode_rate"], "30");
}

TEST_F(MovieFactsTest, GivesTheFilesOwnKeysByteForByte) {
    const std::string awkward = "a:b \"quoted\" back\\slash\nsecond line \xff\xfe end:";
    open(makeMovie("a.mov", 1,
                   {"-c:v", "mjpeg", "-movflags", "use_metadata_tags", "-metadata",
                    "com.example.camera:lens=" + awkward, "-metadata", "title=" + awkward}));

    auto known = metadata();

    EXPECT_EQ(known["com.example.camera:lens"], awkward);
    EXPECT_EQ(known["title"], awkward);
}

TEST_F(MovieFactsTest, GivesAValueOfAMebibyte) {
    const std::string key = "com.example.notes";
    std::string value(1 << 20, 'x');
    value[500000] = ':';
    // Longer than a command line's argument may be, so through a file.
    std::ofstream(path("keys.txt")) << ";FFMETADATA1\n" << key << "=" << value << "\n";
    makeMovie("plain.mov", 1, {"-c:v", "mjpeg"});
    runFfmpeg({"-i", path("plain.mov"), "-i", path("keys.txt"), "-map_metadata", "1", "-c", "copy",
               "-movflags", "use_metadata_tags", path("a.mov")});
    open(path("a.mov"));

    EXPECT_EQ(metadata()[key], value);
}

TEST_F(MovieFactsTest, ListsThePropertiesOfEveryTrack) {
    runFfmpeg({"-f",        "lavfi",     "-i",          "testsrc2=size=160x96:rate=25",
               "-f",        "lavfi",     "-i",          "sine=sample_rate=48000",
               "-frames:v", "3",         "-shortest",   "-c:v",
               "prores_ks", "-c:a",      "pcm_s24le",   "-ac",
               "2",         "-timecode", "01:00:00:00", path("a.mov")});
    open(path("a.mov"));

    auto known = properties();

    EXPECT_EQ(known["tracks"], "3");
    EXPECT_EQ(known["track/1/type"], "video");
    EXPECT_EQ(known["track/1/codec_id"], "apch");
    EXPECT_EQ(known["track/1/width"], "160");
    EXPECT_EQ(known["track/1/frames"], "3");
    EXPECT_EQ(known["track/1/rate"], "25/1");
    EXPECT_EQ(known["track/2/type"], "sound");
    EXPECT_EQ(known["track/2/sample_rate"], "48000");
    EXPECT_EQ(known["track/2/channels"], "2");
    EXPECT_EQ(known["track/2/layout"], "stereo");
    EXPECT_EQ(known["track/2/bits"], "24");
    EXPECT_EQ(known["track/3/type"], "timecode");
    EXPECT_EQ(known["track/3/meta/timecode"], "01:00:00:00");
}

TEST_F(MovieFactsTest, KeepsValuesAboveWhiteAndBelowBlack) {
    // Video range: 16 is black and 235 white; 254 and 1 are beyond.
    runFfmpeg({"-f", "lavfi", "-i",
               "color=black:size=16x16:rate=25,format=yuv422p10le,geq=lum='if(lt(X,8),1016,4)':"
               "cb=512:cr=512",
               "-frames:v", "1", "-c:v", "v210", path("a.mov")});
    open(path("a.mov"));

    const std::vector<float> frame = read(0);

    ASSERT_FALSE(frame.empty());
    EXPECT_NEAR(frame[0], (1016.0f - 64) / 876, 1e-4f);
    EXPECT_NEAR(frame[4 * 15], (4.0f - 64) / 876, 1e-4f);
    EXPECT_EQ(frame[3], 1.0f);
}

TEST_F(MovieFactsTest, GivesAlphaAsItIsStored) {
    runFfmpeg({"-f", "lavfi", "-i", "color=red@0.25:size=16x16:rate=25,format=rgba", "-frames:v", "1", "-c:v",
               "png", path("a.mov")});
    open(path("a.mov"));

    const std::vector<float> frame = read(0);

    ASSERT_FALSE(frame.empty());
    EXPECT_GT(frame[0], 0.95f);
    EXPECT_NEAR(frame[3], 0.25f, 0.003f);
}

/// Flat colours through every matrix and range that a movie states: no channel swapped, no matrix mixed up.
TEST_F(MovieFactsTest, UndoesTheMatrixThatTheMovieStates) {
    const struct {
        const char* scale;
        std::vector<std::string> tags;
    } kinds[] = {
        {"out_color_matrix=bt709:out_range=tv", {"-colorspace", "bt709", "-color_range", "tv"}},
        {"out_color_matrix=bt601:out_range=tv", {"-colorspace", "smpte170m", "-color_range", "tv"}},
        {"out_color_matrix=bt2020:out_range=tv", {"-colorspace", "bt2020nc", "-color_range", "tv"}},
        {"out_color_matrix=bt709:out_range=pc", {"-colorspace", "bt709", "-color_range", "pc"}},
    };
    const float colours[][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.2f, 0.6f, 1}};
    for (const auto& kind : kinds)
        for (const auto& colour : colours) {
            char source[160];
            std::snprintf(source, sizeof source,
                          "color=0x%02x%02x%02x:size=64x64:rate=25,format=gbrp,scale=%s",
                          static_cast<int>(std::lround(colour[0] * 255)),
                          static_cast<int>(std::lround(colour[1] * 255)),
                          static_cast<int>(std::lround(colour[2] * 255)), kind.scale);
            std::vector<std::string> arguments = {
                "-f",        "lavfi", "-i",   std::string(source) + ",format=yuv444p10le",
                "-frames:v", "1",     "-c:v", "libx264",
                "-qp",       "0"};
            arguments.insert(arguments.end(), kind.tags.begin(), kind.tags.end());
            arguments.push_back(path("a.mov"));
            runFfmpeg(arguments);
            open(path("a.mov"));
            const std::vector<float> frame = read(0);
            ASSERT_FALSE(frame.empty());
            for (int channel = 0; channel < 3; ++channel)
                EXPECT_NEAR(frame[static_cast<std::size_t>(channel)], colour[channel], 0.004f) << source;
        }
}

TEST_F(MovieFactsTest, GivesBackWhatTheWriterWrote) {
    constexpr int size = 16;
    std::vector<float> pixels;
    for (int sample = 0; sample < size * size * 4; ++sample)
        pixels.push_back(static_cast<float>((sample * 7919) % 65536) / 65535.0f);
    {
        QuickTime::QuickTimeCodecWriterIPCController writer(newBridgeName());
        const char* const* list = writer.codecList();
        int index = 0;
        while (std::string(list[index]).substr(0, 4) != "png ")
            ++index;
        writer.setCodec(index);
        writer.configure(size, size, 1, 5, true, "bitdepth=16", 29.97f);
        ASSERT_EQ(writer.openFile(path("a.mov"), 1), 0);
        ASSERT_EQ(writer.addFrame(1, reinterpret_cast<const char*>(pixels.data()), false), 0);
        writer.finishVideo();
        writer.addTimecodeTrack(Timecode::FrameRate(30, true), 108000, "TAPE 7");
        ASSERT_EQ(writer.closeFile(true), 0);
    }
    open(path("a.mov"));

    const std::vector<float> frame = read(0);

    ASSERT_EQ(frame.size(), pixels.size());
    for (std::size_t sample = 0; sample < pixels.size(); ++sample)
        ASSERT_NEAR(frame[sample], pixels[sample], 0.25f / 65535) << sample;
    EXPECT_EQ(metadata()["input/timecode"], "01:00:00:00");
    EXPECT_EQ(metadata()["quicktime/reel"], "TAPE 7");
    EXPECT_EQ(metadata()["quicktime/codec_name"], "PNG");
    EXPECT_EQ(metadata()["quicktime/alpha"], "premultiplied");
    EXPECT_FLOAT_EQ(info().rate, 29.97f);
}

}  // namespace
}  // namespace Morvane::Testing
