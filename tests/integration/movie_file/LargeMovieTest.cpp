#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"
#include "worker/movie/OrdinaryMovie.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace Morvane::Worker {
namespace {

using namespace Tests;

constexpr std::int64_t hole = std::int64_t{5} << 30;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// An unfinished movie of 2 x `frames` frames with a hole of 5 GiB in the middle: two unfinished movies, of
/// the second one only its fragments, which may stand anywhere.
void makeUnfinishedMovieWithHole(const TestFolder& folder, const std::string& path, int frames) {
    const TestPackets packets(tinyFrames(2 * frames));
    for (const int half : {0, 1}) {
        MovieFile movie(half == 0 ? path : folder.file("second"),
                        {packets.track(), TimecodeTrack{24, 24, "A"}, {}});
        for (int i = half * frames; i < (half + 1) * frames; ++i) {
            movie.addVideoPacket(*packets.packets()[i]);
        }
    }
    const std::string second = contentsOf(folder.file("second"));
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out | std::ios::ate);
    const auto end = static_cast<std::int64_t>(file.tellp());
    char header[16] = {0, 0, 0, 1, 'f', 'r', 'e', 'e'};
    for (int i = 0; i < 8; ++i) {
        header[8 + i] = static_cast<char>(hole >> (56 - 8 * i));
    }
    file.write(header, sizeof header);
    file.seekp(end + hole);
    const std::size_t fragments = second.find("moof") - 4;
    file.write(second.data() + fragments, static_cast<std::streamsize>(second.size() - fragments));
    std::filesystem::remove(folder.file("second"));
}

class LargeMovieTest : public testing::TestWithParam<bool> {};

TEST_P(LargeMovieTest, OffsetsAndSizesBeyondFourGibibytesAreKept) {
    const bool indexFirst = GetParam();
    TestFolder folder;
    const std::string path = folder.file("large.mov");
    constexpr int half = 20;
    makeUnfinishedMovieWithHole(folder, path, half);
    {
        OutputFile file = OutputFile::open(path);
        const FragmentedMovie found = scanFragments(file);
        ASSERT_EQ(found.pictures.size(), 2U * half);
        makeOrdinary(file, found, {TimecodeTrack{24, 24, "A"}, {}, {}}, indexFirst, 0);
    }

    ASSERT_EQ(problemsOf(path), "");
    const WalkedMovie walked = walkMovie(path);
    EXPECT_EQ(walked.indexFirst, indexFirst);
    EXPECT_TRUE(walked.tracks.at(0).wideOffsets);
    EXPECT_GT(walked.tracks.at(0).samples.back().offset, hole);
    const std::string all =
        outputOf({"ffmpeg", "-v", "error", "-i", path, "-map", "0:v", "-f", "rawvideo", "-"});
    ASSERT_EQ(all.size(), 2U * half * 8);
    const TestPackets packets(tinyFrames(2 * half));
    for (int i = 0; i < 2 * half; ++i) {
        EXPECT_EQ(std::memcmp(all.data() + i * 8, packets.packets()[i]->data, 8), 0) << i;
    }
    const nlohmann::json info = mediainfo(path);
    EXPECT_EQ(info.at(1).at("FrameCount"), std::to_string(2 * half));
}

INSTANTIATE_TEST_SUITE_P(IndexFirstAndLast, LargeMovieTest, testing::Bool());

}  // namespace
}  // namespace Morvane::Worker
