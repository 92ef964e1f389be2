#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"
#include "WriterProcess.h"
#include "worker/movie/Recovery.h"

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace Morvane::Worker {
namespace {

using namespace Tests;

constexpr int frames = 6;

struct FaultAndPlacement {
    const char* name;
    const char* fault;
    std::vector<std::string> options;
};

class MovieDiskFaultTest : public testing::TestWithParam<FaultAndPlacement> {};

TEST_P(MovieDiskFaultTest, AFaultAtEachWriteInTurnIsReportedAndLosesNothingWritten) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    bool reached = true;
    int mostReadable = 0;
    for (int call = 1; reached; ++call) {
        std::vector<std::string> arguments = {path,
                                              "--frames",
                                              std::to_string(frames),
                                              "--fragment-each",
                                              "--fault",
                                              GetParam().fault,
                                              "--call",
                                              std::to_string(call)};
        arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
        std::filesystem::remove(path);

        const WriterEnd end = runWriter(arguments);

        reached = end.callReached();
        SCOPED_TRACE(fmt::format("{} at call {}", GetParam().fault, call));
        ASSERT_FALSE(end.killed);
        if (end.exitCode == 0) {
            EXPECT_EQ(problemsOf(path), "");
            EXPECT_EQ(libraryFrames(path), frames);
        } else {
            EXPECT_EQ(end.exitCode, 2);
            EXPECT_FALSE(end.finished());
            // The packet whose writing failed is lost, none before it.
            const int readable = libraryFrames(path);
            EXPECT_GE(readable, end.packets());
            mostReadable = std::max(readable, mostReadable);
        }
        EXPECT_LE(folder.entries(), 1);
    }
    EXPECT_EQ(mostReadable, frames);
}

const FaultAndPlacement faults[] = {
    {"full_copied_index_first", "full", {}},
    {"full_copied_index_last", "full", {"--index-last"}},
    {"full_in_place_index_first", "full", {"--in-place"}},
    {"full_in_place_index_last", "full", {"--in-place", "--index-last"}},
    {"error_copied_index_first", "error", {}},
    {"error_in_place_index_first", "error", {"--in-place"}},
    {"error_in_place_index_last", "error", {"--in-place", "--index-last"}},
};

INSTANTIATE_TEST_SUITE_P(Faults, MovieDiskFaultTest, testing::ValuesIn(faults),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

/// Files of this process can grow no further than so many bytes while it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limited = {bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before = {};
};

TestPackets::Request largeFrames(int count) {
    TestPackets::Request request;
    request.frames = count;
    request.width = 640;
    request.height = 480;
    request.encoder = "rawvideo";
    request.pixels = AV_PIX_FMT_UYVY422;
    request.tag = MKTAG('2', 'v', 'u', 'y');
    return request;
}

TEST(MovieFullDiskTest, AFullDiskIsSaidInTheSystemsWordsAndTheMovieOfWhatIsThereIsMadeWhole) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    const TestPackets packets(largeFrames(400));
    const FileSizeLimit limit(64 << 20);
    std::string words;
    {
        MovieFile movie(path, {packets.track(), TimecodeTrack{24, 86400, "A"}, {}});
        try {
            for (const AVPacket* packet : packets.packets()) {
                movie.addVideoPacket(*packet);
            }
        } catch (const StatusError& error) {
            EXPECT_EQ(error.status, Status::DiskFull);
            words = error.what();
        }
        // Told once: what comes after it is out of order, and the end tells how the end went.
        EXPECT_EQ(statusOf([&] { movie.addVideoPacket(*packets.packets()[0]); }), Status::BadArgument);
        EXPECT_EQ(statusOf([&] { movie.finish(true); }), Status::Success);
    }

    EXPECT_EQ(words, "cannot write " + path + ": File too large");
    EXPECT_EQ(problemsOf(path), "");
    // All but what did not fit: some 100 frames of 600 KiB.
    EXPECT_GE(decodedFrames(path), ((64 << 20) - (2 << 20) - (9 << 20)) / (640 * 480 * 2));
}

TEST(MovieFullDiskTest, WhatNoLaterPacketWasToldTheEndTells) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    // The first 14 reach the file together, the other four wait and then do not fit.
    const TestPackets packets(largeFrames(18));
    const FileSizeLimit limit(12 << 20);
    {
        MovieFile::Options options{packets.track(), TimecodeTrack{24, 86400, "A"}, {}};
        options.longestWait = std::chrono::hours(1);
        MovieFile movie(path, options);
        for (const AVPacket* packet : packets.packets()) {
            movie.addVideoPacket(*packet);
        }

        EXPECT_EQ(statusOf([&] { movie.finish(true); }), Status::DiskFull);
    }

    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(decodedFrames(path), 14);
}

TEST(MovieFullDiskTest, SoundThatDoesNotFitIsTakenBackAndTheMovieFinished) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    outputOf(
        {"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=d=100:r=48000", folder.file("sound.wav")});
    const FileSizeLimit limit(8 << 20);
    {
        writeMovie(path, TestPackets(tinyFrames(30)), {}, {}, [&](MovieFile& movie) {
            EXPECT_EQ(statusOf([&] { movie.addAudioFile(folder.file("sound.wav"), 0); }), Status::DiskFull);
        });
    }

    EXPECT_EQ(problemsOf(path), "");
    EXPECT_EQ(decodedFrames(path), 30);
}

}  // namespace
}  // namespace Morvane::Worker
