#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"
#include "WriterProcess.h"
#include "worker/movie/Recovery.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <thread>

namespace Morvane::Worker {
namespace {

using namespace Tests;

std::string timecodeOf(const std::string& path) {
    const nlohmann::json probed = ffprobe(path);
    for (const nlohmann::json& stream : probed.at("streams")) {
        if (stream.value("codec_tag_string", std::string()) == "tmcd") {
            return stream.at("tags").at("timecode");
        }
    }
    return "";
}

int packetsIn(const std::string& path) {
    const nlohmann::json probed = ffprobe(path);
    return std::stoi(probed.at("streams").at(0).value("nb_read_packets", std::string("0")));
}

std::string recoveredTimecodeOf(const RecoveredMovie& movie) {
    return movie.timecode ? fmt::format("{}@{} {}", movie.timecode->startFrame,
                                        movie.timecode->framesPerSecond, movie.timecode->reel)
                          : "";
}

/// A movie that was left unfinished, as a reader sees it and after its recovery: nothing lost in between.
void expectReadableAndRecoverable(const std::string& path, int leastFrames) {
    EXPECT_GE(libraryFrames(path), leastFrames);
    const RecoveredMovie recovered = recoverMovie(path);
    EXPECT_GE(recovered.frames, leastFrames);
    EXPECT_EQ(recoveredTimecodeOf(recovered), "86400@24 A001");
    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(libraryFrames(path), recovered.frames);
    EXPECT_EQ(walkMovie(path).tracks.size(), 2U);
}

TEST(MovieCrashTest, KilledAtAnyMomentEveryPacketOlderThanASecondCanBeRead) {
    constexpr int kills = 60;
    constexpr int atOnce = 20;
    std::mt19937 random(20240117);
    TestFolder folder;
    for (int round = 0; round < kills / atOnce; ++round) {
        std::vector<std::thread> threads;
        std::vector<int> handedOver(atOnce);
        for (int i = 0; i < atOnce; ++i) {
            const int moment = std::uniform_int_distribution<>(1000, 2500)(random);
            const int interval = std::uniform_int_distribution<>(200, 40000)(random);
            threads.emplace_back([&, i, moment, interval] {
                const std::string path = folder.file(fmt::format("{}.mov", i));
                // Every third one is killed about the time at which it finishes.
                const int frames = i % 3 == 0 ? std::max(1, moment * 1000 / interval) : 20000;
                runAndKillWriter(
                    {path, "--frames", std::to_string(frames), "--interval", std::to_string(interval)},
                    moment, handedOver[i]);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (int i = 0; i < atOnce; ++i) {
            const std::string path = folder.file(fmt::format("{}.mov", i));
            if (handedOver[i] > 0) {
                SCOPED_TRACE(fmt::format("round {}, movie {}", round, i));
                EXPECT_GE(packetsIn(path), handedOver[i]);
                EXPECT_EQ(timecodeOf(path), "01:00:00:00");
                const RecoveredMovie recovered = recoverMovie(path);
                EXPECT_EQ(problemsOf(path), "");
                EXPECT_TRUE(recovered.wasWhole || recovered.frames >= handedOver[i]);
            }
        }
    }
}

struct Placement {
    const char* name;
    std::vector<std::string> options;
};

class MovieKilledAtEachCallTest : public testing::TestWithParam<Placement> {};

TEST_P(MovieKilledAtEachCallTest, TheFileIsAMovieAfterEveryStep) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    const std::string sound = folder.file("sound.wav");
    outputOf({"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=d=1.2", sound});
    int wholeAtTheEnd = 0;
    bool reached = true;
    for (int call = 1; reached; ++call) {
        std::vector<std::string> arguments = {
            path,  "--frames", "6",    "--fragment-each", "--sound",
            sound, "--fault",  "kill", "--call",          std::to_string(call)};
        arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
        std::filesystem::remove(path);

        const WriterEnd end = runWriter(arguments);

        reached = end.callReached();
        SCOPED_TRACE(fmt::format("killed at call {}", call));
        ASSERT_EQ(end.killed, reached);
        if (end.packets() == 0) {
            continue;  // killed while the file was being made
        }
        if (walkMovie(path).problems.empty()) {
            ++wholeAtTheEnd;
            EXPECT_TRUE(recoverMovie(path).wasWhole);
        } else {
            expectReadableAndRecoverable(path, end.packets());
        }
        EXPECT_LE(folder.entries(), 3);
    }
    EXPECT_GE(wholeAtTheEnd, 2);
}

const Placement placements[] = {
    {"copied_index_first", {}},
    {"copied_index_last", {"--index-last"}},
    {"in_place_index_first", {"--in-place"}},
    {"in_place_index_last", {"--in-place", "--index-last"}},
};

INSTANTIATE_TEST_SUITE_P(Placements, MovieKilledAtEachCallTest, testing::ValuesIn(placements),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

class MovieLeftTest : public testing::TestWithParam<const char*> {
protected:
    MovieLeftTest() : path(folder.file("a.mov")) {
        runWriter({path, "--leave", "--frames", "40", "--encoder", GetParam()});
    }

    TestFolder folder;
    std::string path;
};

TEST_P(MovieLeftTest, WithoutFinishEveryPacketIsThere) {
    EXPECT_EQ(packetsIn(path), 40);
    const nlohmann::json info = mediainfo(path);
    EXPECT_EQ(info.at(1).at("FrameCount"), "40");
    EXPECT_EQ(info.at(0).at("Title"), "Ball");

    EXPECT_EQ(timecodeOf(path), "01:00:00:00");
    EXPECT_EQ(decodedFrames(path), 40);

    expectReadableAndRecoverable(path, 40);

    EXPECT_EQ(timecodeOf(path), "01:00:00:00");
    EXPECT_EQ(decodedFrames(path), 40);

    const nlohmann::json tags = ffprobe(path).at("format").at("tags");
    EXPECT_EQ(tags.at("title"), "Ball");
}

TEST_P(MovieLeftTest, CutAnywhereTheWholeFramesBeforeTheCutAreRecovered) {
    const std::string original = path;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(original));
    const std::string cut = folder.file("cut.mov");
    std::int64_t previous = 41;
    for (std::int64_t length = size; length > size - 2000 && length > 2'100'000; length -= 97) {
        std::filesystem::copy_file(original, cut, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(cut, static_cast<std::uintmax_t>(length));
        std::int64_t frames = 0;
        try {
            frames = recoverMovie(cut).frames;
        } catch (const StatusError& error) {
            EXPECT_EQ(error.status, Status::BadArgument);
            continue;
        }
        EXPECT_EQ(problemsOf(cut), "");
        EXPECT_LE(frames, previous);
        EXPECT_EQ(libraryFrames(cut), frames);
        previous = frames;
    }
    EXPECT_LT(previous, 40);
}

INSTANTIATE_TEST_SUITE_P(Encoders, MovieLeftTest, testing::Values("mjpeg", "libx264"));

TEST(MovieRecoveryTest, AWholeMovieIsLeftAlone) {
    TestFolder folder;
    writeMovie(folder.file("a.mov"), TestPackets(tinyFrames(3)));
    const auto before = std::filesystem::last_write_time(folder.file("a.mov"));

    EXPECT_TRUE(recoverMovie(folder.file("a.mov")).wasWhole);

    EXPECT_EQ(std::filesystem::last_write_time(folder.file("a.mov")), before);
}

TEST(MovieRecoveryTest, WhatIsNoMovieIsRefused) {
    TestFolder folder;
    std::ofstream(folder.file("text.mov")) << "This is no movie at all, just a line of text.\n";
    std::ofstream(folder.file("empty.mov")) << "";

    EXPECT_EQ(statusOf([&] { recoverMovie(folder.file("text.mov")); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] { recoverMovie(folder.file("empty.mov")); }), Status::BadArgument);
    EXPECT_EQ(statusOf([&] { recoverMovie(folder.file("none.mov")); }), Status::NotFound);
    EXPECT_EQ(statusOf([&] { recoverMovie(folder.path()); }), Status::BadArgument);
}

TEST(MovieRecoveryTest, WhatAnEarlierRecoveryLeftIsOverwritten) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    runWriter({path, "--leave", "--frames", "5"});
    std::ofstream(folder.file(".a.mov.index")) << std::string(100'000, 'x');

    EXPECT_EQ(recoverMovie(path).frames, 5);

    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(folder.entries(), 1);
}

TEST(MovieRecoveryTest, PicturesWaitingForMissingOnesAreLeftOut) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    const TestPackets packets(reorderedFrames(40));
    {
        MovieFile movie(path, {packets.track(), std::nullopt, {}});
        // Ends behind a picture that is shown three frames later than the next one to be stored.
        for (int i = 0; i < 14; ++i) {
            movie.addVideoPacket(*packets.packets()[i]);
        }
    }
    std::int64_t latest = 0;
    for (int i = 0; i < 14; ++i) {
        latest = std::max(latest, packets.packets()[i]->pts);
    }
    ASSERT_GT(latest, 13);

    const RecoveredMovie recovered = recoverMovie(path);

    EXPECT_EQ(recovered.frames + recovered.framesLeftOut, 14);
    EXPECT_GT(recovered.framesLeftOut, 0);
    EXPECT_LE(recovered.framesLeftOut, 4);
    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(decodedFrames(path), recovered.frames);
}

}  // namespace
}  // namespace Morvane::Worker
