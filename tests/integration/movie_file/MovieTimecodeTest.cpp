#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

using namespace Tests;

std::string tag(const nlohmann::json& stream, const char* name) {
    return stream.value("tags", nlohmann::json::object()).value(name, std::string());
}

/// What the movie at `path` says, by each reader.
struct ReadTimecode {
    std::string byFfprobe;
    std::string byMediainfo;
    std::string reelByFfprobe;
    std::string reelByMediainfo;
    std::string reelByExiftool;
};

ReadTimecode readTimecodeOf(const std::string& path) {
    ReadTimecode result;
    const nlohmann::json probed = ffprobe(path);
    for (const nlohmann::json& stream : probed.at("streams")) {
        if (stream.value("codec_tag_string", "") == "tmcd") {
            result.byFfprobe = tag(stream, "timecode");
            result.reelByFfprobe = tag(stream, "reel_name");
        }
    }
    for (const nlohmann::json& track : mediainfo(path)) {
        if (track.value("Type", "") == "Time code") {
            result.byMediainfo = track.value("TimeCode_FirstFrame", "");
            result.reelByMediainfo = track.value("Title", "");
        }
    }
    const nlohmann::json tags = exiftool(path);
    result.reelByExiftool = tags.contains("OtherName") ? tags.at("OtherName").get<std::string>() : "";
    return result;
}

std::uint32_t numberAt(const std::string& bytes, std::size_t offset, int width) {
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i));
    }
    return value;
}

TEST(MovieTimecodeTest, ReadersAgreeOnStartAndReel) {
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    writeMovie(path, TestPackets(tinyFrames(48, {24000, 1001})), {},
               {{}, TimecodeTrack{24, 86400, "A001C002"}, {}});

    ASSERT_EQ(problemsOf(path), "");
    const ReadTimecode read = readTimecodeOf(path);
    EXPECT_EQ(read.byFfprobe, "01:00:00:00");
    EXPECT_EQ(read.byMediainfo, "01:00:00:00");
    EXPECT_EQ(read.reelByFfprobe, "A001C002");
    EXPECT_EQ(read.reelByMediainfo, "A001C002");
    EXPECT_EQ(read.reelByExiftool, "A001C002");
}

TEST(MovieTimecodeTest, TheDescriptionHasThePicturesClockTheNominalRateAndTheDayFlag) {
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    writeMovie(path, TestPackets(tinyFrames(48, {30000, 1001})), {}, {{}, TimecodeTrack{30, 5, ""}, {}});

    const WalkedMovie walked = walkMovie(path);
    const WalkedTrack* track = walked.track("tmcd");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(numberAt(track->description, 12, 4),
              2U);  // 24-hour flag alone: no drop-frame, no negative times
    EXPECT_EQ(numberAt(track->description, 16, 4), 30000U);  // time scale
    EXPECT_EQ(numberAt(track->description, 20, 4), 1001U);   // frame duration
    EXPECT_EQ(numberAt(track->description, 24, 1), 30U);
    EXPECT_EQ(track->samples.size(), 1U);
    EXPECT_EQ(track->mediaDuration, walked.tracks.at(0).mediaDuration);
}

TEST(MovieTimecodeTest, TheLastGivenOneReplacesTheProvisionalOne) {
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    writeMovie(path, TestPackets(tinyFrames(30)), {}, {{}, TimecodeTrack{24, 1, "OLD"}, {}},
               [](MovieFile& movie) {
                   movie.setTimecode(TimecodeTrack{25, 90000, "NEW"});
               });

    ASSERT_EQ(problemsOf(path), "");
    const ReadTimecode read = readTimecodeOf(path);
    EXPECT_EQ(read.byFfprobe, "01:00:00:00");
    EXPECT_EQ(read.reelByFfprobe, "NEW");
}

TEST(MovieTimecodeTest, TheProvisionalOneCanBeDropped) {
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    writeMovie(path, TestPackets(tinyFrames(30)), {}, {{}, TimecodeTrack{24, 1, "OLD"}, {}},
               [](MovieFile& movie) { movie.setTimecode(std::nullopt); });

    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(walkMovie(path).track("tmcd"), nullptr);
}

TEST(MovieTimecodeTest, AStartNearTheEndOfTheDayStaysExact) {
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    // 23:59:59:20 at 25 frames a second; the day ends within the movie.
    writeMovie(path, TestPackets(tinyFrames(50, {25, 1})), {}, {{}, TimecodeTrack{25, 2159995, ""}, {}});

    ASSERT_EQ(problemsOf(path), "");
    const ReadTimecode read = readTimecodeOf(path);
    EXPECT_EQ(read.byFfprobe, "23:59:59:20");
    EXPECT_EQ(read.byMediainfo, "23:59:59:20");
}

TEST(MovieTimecodeTest, AReelMayHaveLettersOfAnyLanguage) {
    const std::string reel = "Катушка 一巻 é";
    TestFolder folder;
    const std::string path = folder.file("timecode.mov");

    writeMovie(path, TestPackets(tinyFrames(30)), {}, {{}, TimecodeTrack{24, 0, reel}, {}});

    ASSERT_EQ(problemsOf(path), "");
    const ReadTimecode read = readTimecodeOf(path);
    EXPECT_EQ(read.reelByFfprobe, reel);
    EXPECT_EQ(read.reelByMediainfo, reel);
    EXPECT_EQ(read.reelByExiftool, reel);
}

TEST(MovieTimecodeTest, WhatATrackCannotHoldIsRefused) {
    TestFolder folder;
    const TestPackets packets(tinyFrames(1));
    MovieFile movie(folder.file("timecode.mov"), {packets.track(), std::nullopt, {}});

    EXPECT_EQ(statusOf([&] { movie.setTimecode(TimecodeTrack{24, -1, ""}); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] { movie.setTimecode(TimecodeTrack{24, INT64_MIN, ""}); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] {
                  movie.setTimecode(TimecodeTrack{24, INT64_C(1) << 31, ""});
              }),
              Status::BadArgument);
    EXPECT_EQ(statusOf([&] { movie.setTimecode(TimecodeTrack{0, 0, ""}); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] { movie.setTimecode(TimecodeTrack{256, 0, ""}); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] {
                  movie.setTimecode(TimecodeTrack{24, 0, std::string(256, 'r')});
              }),
              Status::BadArgument);
}

}  // namespace
}  // namespace Morvane::Worker
