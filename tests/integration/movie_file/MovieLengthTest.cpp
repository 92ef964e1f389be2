#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cmath>

namespace Morvane::Worker {
namespace {

using namespace Tests;

double rateOf(AVRational rate) {
    return static_cast<double>(rate.num) / rate.den;
}

std::string rateName(AVRational rate) {
    return fmt::format("{}/{}", rate.num, rate.den);
}

struct RateAndFinish {
    AVRational rate;
    Finish finish;
};

class MovieRateTest : public testing::TestWithParam<RateAndFinish> {};

TEST_P(MovieRateTest, ReadersAgreeOnRateCountAndDuration) {
    const AVRational rate = GetParam().rate;
    TestFolder folder;
    const std::string path = folder.file("rate.mov");
    constexpr int frames = 50;

    writeMovie(path, TestPackets(reorderedFrames(frames, rate)), GetParam().finish,
               {{}, TimecodeTrack{24, 1000, ""}, {}});

    ASSERT_EQ(problemsOf(path), "");
    const WalkedMovie walked = walkMovie(path);
    EXPECT_EQ(walked.indexFirst, GetParam().finish.indexFirst);
    const WalkedTrack& pictures = walked.tracks.at(0);
    // Exact: frames over ticks is the rate.
    EXPECT_EQ(pictures.mediaDuration * rate.num,
              static_cast<std::int64_t>(frames) * rate.den * pictures.timeScale);
    EXPECT_EQ(walked.timeScale, pictures.timeScale);
    EXPECT_EQ(decodedFrames(path), frames);

    const nlohmann::json probed = ffprobe(path);
    const nlohmann::json& video = probed.at("streams").at(0);
    EXPECT_EQ(video.at("avg_frame_rate"), rateName(rate));
    EXPECT_EQ(video.at("r_frame_rate"), rateName(rate));
    EXPECT_EQ(video.at("nb_frames"), std::to_string(frames));
    EXPECT_EQ(video.at("start_pts"), 0);
    EXPECT_NEAR(std::stod(probed.at("format").at("duration").get<std::string>()), frames / rateOf(rate),
                1e-5);

    const nlohmann::json info = mediainfo(path);
    EXPECT_EQ(info.at(1).at("FrameCount"), std::to_string(frames));
    EXPECT_NEAR(std::stod(info.at(1).at("FrameRate").get<std::string>()), rateOf(rate), 0.0006);
    EXPECT_NEAR(std::stod(info.at(1).at("Duration").get<std::string>()), frames / rateOf(rate), 0.001);
    EXPECT_EQ(info.at(1).at("FrameRate_Mode"), "CFR");

    const nlohmann::json tags = exiftool(path);
    EXPECT_NEAR(tags.at("Duration").get<double>(), frames / rateOf(rate), 1e-3);
    EXPECT_NEAR(tags.at("VideoFrameRate").get<double>(), rateOf(rate), 1e-3);
}

std::vector<RateAndFinish> ratesAndFinishes() {
    std::vector<RateAndFinish> all;
    const AVRational rates[] = {{24, 1}, {25, 1}, {24000, 1001},  {30000, 1001}, {60000, 1001},
                                {60, 1}, {25, 2}, {120000, 1001}, {1, 1},        {120, 1}};
    int number = 0;
    for (const AVRational rate : rates) {
        // Each rate with another of the four ways to place the index.
        all.push_back({rate, {number % 2 == 0, number % 4 >= 2}});
        ++number;
    }
    for (const bool indexFirst : {false, true}) {
        for (const bool inPlace : {false, true}) {
            all.push_back({{30000, 1001}, {indexFirst, inPlace}});
        }
    }
    return all;
}

std::string nameOf(const testing::TestParamInfo<RateAndFinish>& info) {
    return fmt::format("{}_{}_{}_{}_{}", info.index, info.param.rate.num, info.param.rate.den,
                       info.param.finish.indexFirst ? "first" : "last",
                       info.param.finish.inPlace ? "inPlace" : "copied");
}

INSTANTIATE_TEST_SUITE_P(Rates, MovieRateTest, testing::ValuesIn(ratesAndFinishes()), nameOf);

TEST(MovieLengthTest, OneFrameMakesAMovie) {
    for (const bool inPlace : {false, true}) {
        TestFolder folder;
        const std::string path = folder.file("one.mov");

        writeMovie(path, TestPackets(reorderedFrames(1)), {true, inPlace},
                   {{}, TimecodeTrack{24, 0, ""}, {}});

        EXPECT_EQ(problemsOf(path), "");
        EXPECT_EQ(decodedFrames(path), 1);
        EXPECT_EQ(mediainfo(path).at(1).at("FrameCount"), "1");
        EXPECT_EQ(walkMovie(path).duration, 1000);
    }
}

TEST(MovieLengthTest, AHundredThousandFramesDoNotDrift) {
    constexpr int frames = 100'000;
    for (const AVRational rate : {AVRational{24000, 1001}, AVRational{60000, 1001}, AVRational{25, 2}}) {
        TestFolder folder;
        const std::string path = folder.file("long.mov");

        writeMovie(path, TestPackets(tinyFrames(frames, rate)), {}, {{}, TimecodeTrack{24, 0, ""}, {}});

        ASSERT_EQ(problemsOf(path), "");
        const WalkedMovie walked = walkMovie(path);
        const WalkedTrack& pictures = walked.tracks.at(0);
        ASSERT_EQ(pictures.samples.size(), static_cast<std::size_t>(frames));
        for (const int frame : {1, 1000, 99'999}) {
            EXPECT_EQ(pictures.samples[frame].shown * rate.num,
                      static_cast<std::int64_t>(frame) * rate.den * pictures.timeScale);
        }
        const nlohmann::json video = ffprobe(path).at("streams").at(0);
        EXPECT_EQ(video.at("avg_frame_rate"), rateName(rate));
        EXPECT_EQ(mediainfo(path).at(1).at("FrameCount"), std::to_string(frames));
    }
}

TEST(MovieLengthTest, TwentyThousandFramesOfALongGroupAreAllThere) {
    constexpr int frames = 20'000;
    TestFolder folder;
    const std::string path = folder.file("many.mov");

    writeMovie(path, TestPackets(reorderedFrames(frames)), {true, true});

    ASSERT_EQ(problemsOf(path), "");
    EXPECT_EQ(decodedFrames(path), frames);
}

TEST(MovieLengthTest, MediaThatStayInPlaceLeaveTheIndexWhereItWasWaitedFor) {
    TestFolder folder;
    const TestPackets packets({});

    writeMovie(folder.file("first.mov"), packets, {true, true});
    writeMovie(folder.file("last.mov"), packets, {false, true});

    EXPECT_EQ(walkMovie(folder.file("first.mov")).topLevel,
              (std::vector<std::string>{"ftyp", "moov", "free", "mdat"}));
    EXPECT_EQ(walkMovie(folder.file("last.mov")).topLevel,
              (std::vector<std::string>{"ftyp", "mdat", "moov"}));
}

TEST(MovieLengthTest, MediaThatAreCopiedLeaveNoGap) {
    TestFolder folder;
    const TestPackets packets({});

    writeMovie(folder.file("first.mov"), packets, {true, false});
    writeMovie(folder.file("last.mov"), packets, {false, false});

    EXPECT_EQ(walkMovie(folder.file("first.mov")).topLevel,
              (std::vector<std::string>{"ftyp", "moov", "mdat"}));
    EXPECT_EQ(walkMovie(folder.file("last.mov")).topLevel,
              (std::vector<std::string>{"ftyp", "mdat", "moov"}));
    EXPECT_EQ(folder.entries(), 2);
}

TEST(MovieLengthTest, AnIndexThatOutgrowsItsPlaceIsPutFirstByACopy) {
    // 600,000 sizes of 4 bytes are more than the 2 MiB that wait for the index.
    constexpr int frames = 600'000;
    TestFolder folder;
    const std::string path = folder.file("outgrown.mov");
    TestPackets packets(tinyFrames(2));
    {
        MovieFile::Options options{packets.track(), std::nullopt, {}};
        options.fewestBytesInPlace = 0;
        MovieFile movie(path, options);
        AVPacket* packet = av_packet_clone(packets.packets()[0]);
        for (int frame = 0; frame < frames; ++frame) {
            packet->pts = packet->dts = frame;
            packet->size = 4 + frame % 2 * 4;  // else one size would do for all
            movie.addVideoPacket(*packet);
        }
        av_packet_free(&packet);
        movie.finish(true);
    }

    EXPECT_EQ(problemsOf(path), "");
    EXPECT_TRUE(walkMovie(path).indexFirst);
    EXPECT_EQ(walkMovie(path).tracks.at(0).samples.size(), static_cast<std::size_t>(frames));
}

}  // namespace
}  // namespace Morvane::Worker
