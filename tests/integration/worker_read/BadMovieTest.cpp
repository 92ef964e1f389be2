#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "platform/ProcessWatch.h"
#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/real_worker/RawController.h"
#include "tests/integration/worker_read/ReaderFixture.h"

namespace Morvane::Testing {
namespace {

/// Files that are no movies, or not whole ones: a status, a line on standard error, and the worker lives.
class BadMovieTest : public ReaderFixture {
protected:
    int statusOf(const std::string& file) {
        open(file);
        return openStatus;
    }

    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void write(const std::string& file, const std::string& content) {
        std::ofstream(file, std::ios::binary) << content;
    }

    /// Where the bytes of frame `number` lie.
    std::pair<std::size_t, std::size_t> placeOfFrame(const std::string& movie, int number) {
        const std::string places = outputOf({"ffprobe", "-v", "error", "-select_streams", "v",
                                             "-show_entries", "packet=pos,size", "-of", "csv=p=0", movie});
        std::istringstream lines(places);
        std::string line;
        for (int skipped = 0; skipped <= number; ++skipped)
            std::getline(lines, line);
        return {std::stoul(line.substr(line.find(',') + 1)), std::stoul(line)};
    }
};

TEST_F(BadMovieTest, RefusesWhatIsNoMovie) {
    write(path("text.mov"), "This is a text.");
    write(path("empty.mov"), "");
    write(path("noise.mov"), [] {
        std::mt19937 random(3);
        std::string bytes(100000, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        return bytes;
    }());
    mkfifo(path("pipe.mov").c_str(), 0600);

    EXPECT_EQ(statusOf(path("missing.mov")), -43);
    EXPECT_EQ(statusOf(path("text.mov")), -8960);
    EXPECT_EQ(statusOf(path("empty.mov")), -8960);
    EXPECT_EQ(statusOf(path("noise.mov")), -8960);
    EXPECT_EQ(statusOf(folder.string()), -50);
    EXPECT_EQ(statusOf(path("pipe.mov")), -50);
    for (const char* name : {"missing.mov", "text.mov", "empty.mov", "noise.mov", "pipe.mov"})
        EXPECT_NE(errors().find(path(name)), std::string::npos) << name;
}

TEST_F(BadMovieTest, RefusesSoundWithoutPictures) {
    runFfmpeg({"-f", "lavfi", "-i", "sine=duration=0.1", path("sound.mov")});

    EXPECT_EQ(statusOf(path("sound.mov")), -8960);
    EXPECT_NE(errors().find("no picture track"), std::string::npos);
}

/// Fragments announce a track whether anything comes in it or not.
TEST_F(BadMovieTest, ReadsPicturesBesideATrackOfNoLength) {
    runFfmpeg({"-f", "lavfi", "-i", "testsrc=size=64x48:rate=25:duration=0.2", "-f", "lavfi", "-i",
               "sine=duration=0.2", "-c:v", "png", "-c:a", "pcm_s16le", "-af", "atrim=end=0", "-movflags",
               "empty_moov+frag_keyframe", path("silent.mov")});

    open(path("silent.mov"));

    EXPECT_EQ(openStatus, 0);
    EXPECT_FALSE(read(4).empty());
}

TEST_F(BadMovieTest, RefusesEveryFrameOfAPictureTrackOfNoLength) {
    runFfmpeg({"-f", "lavfi", "-i", "testsrc=size=64x48:rate=25:duration=0.2", "-c:v", "png", "-movflags",
               "empty_moov+frag_keyframe", path("whole.mov")});
    const std::string whole = contentOf(path("whole.mov"));
    write(path("none.mov"), whole.substr(0, whole.find("moof") - 4));

    open(path("none.mov"));

    EXPECT_EQ(openStatus, 0);
    EXPECT_TRUE(read(0).empty());
    EXPECT_EQ(readStatus, -50);
}

TEST_F(BadMovieTest, OpensNoOtherFileThanTheOneThatWasNamed) {
    makeMovie("secret.mov", 2, {"-c:v", "mjpeg"});
    write(path("list.mov"), "ffconcat version 1.0\nfile secret.mov\n");
    write(path("list.m3u8"), "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nsecret.mov\n#EXT-X-ENDLIST\n");

    EXPECT_NE(statusOf(path("list.mov")), 0);
    EXPECT_NE(statusOf(path("list.m3u8")), 0);
    EXPECT_NE(statusOf("http://localhost:1/a.mov"), 0);
    EXPECT_NE(statusOf("pipe:0"), 0);
}

TEST_F(BadMovieTest, RefusesFramesThatAreNotThere) {
    open(makeMovie("a.mov", 5, {"-c:v", "mjpeg"}));

    for (const int number : {5, 1000000, 2147483647, -1}) {
        EXPECT_TRUE(read(number).empty());
        EXPECT_EQ(readStatus, -50) << number;
    }
    EXPECT_FALSE(read(4).empty());
}

TEST_F(BadMovieTest, AnswersCallsOutOfOrder) {
    RawController raw(newBridgeName(), "read");
    for (const char* request :
         {"R00000000:0", "R00000002", "R00000004", "R00000005", "R00000009", "W00000002", ""})
        EXPECT_EQ(raw.ask(request), "Error: -50") << request;
    for (const char* request : {"R00000003", "R00000001:a.mov", "R00000001:a.mov:5"})
        EXPECT_EQ(raw.ask(request), "-50") << request;
    const std::string movie = makeMovie("a.mov", 2, {"-c:v", "mjpeg"});
    EXPECT_EQ(raw.ask("R00000001:" + movie + ":1"), "0");
    EXPECT_EQ(raw.ask("R00000001:" + movie + ":1"), "-50");
    EXPECT_EQ(raw.ask("R00000002"), "160 96 3 25 1 1 2 8");
    EXPECT_EQ(raw.ask("R00000000"), "Error: -50");
    EXPECT_EQ(raw.ask("R00000003"), "0");
    EXPECT_EQ(raw.ask("R00000002"), "Error: -50");
    EXPECT_EQ(raw.ask("R00000001:" + movie + ":1"), "0");
}

TEST_F(BadMovieTest, ReadsWhatIsLeftOfAMovieThatWasCut) {
    makeMovie("slow.mov", 20, {"-c:v", "prores_ks", "-movflags", "faststart"});
    makeMovie("fast.mov", 20,
              {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "8", "-movflags", "faststart"});
    makeMovie("end.mov", 20, {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "8"});
    makeMovie("pieces.mov", 20,
              {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "4", "-movflags", "frag_keyframe+empty_moov"});
    for (const char* name : {"slow.mov", "fast.mov", "end.mov", "pieces.mov"}) {
        const std::string content = contentOf(path(name));
        const auto whole = framesByFfmpeg(path(name), "format=rgb24", 160 * 96 * 3);
        int readable = 0;
        for (std::size_t tenth = 0; tenth < 10; ++tenth) {
            write(path("cut.mov"), content.substr(0, content.size() * tenth / 10));
            if (statusOf(path("cut.mov")) != 0)
                continue;
            const int frames = info().frames;
            ASSERT_LE(frames, 20);
            for (int number = 0; number < frames; ++number) {
                const std::vector<float> frame = read(number);
                EXPECT_TRUE(readStatus == 0 || readStatus == -8960 || readStatus == -36) << readStatus;
                if (frame.empty())
                    continue;
                ++readable;
                EXPECT_GT(similarity(frame, whole[static_cast<std::size_t>(number)]), 20) << name << number;
            }
        }
        if (std::string(name) != "end.mov") {
            EXPECT_GT(readable, 20) << name;
        }
    }
}

TEST_F(BadMovieTest, NamesADamagedFrameAndReadsTheOthers) {
    for (const auto& [name, options] :
         std::vector<std::pair<std::string, std::vector<std::string>>>{{"prores.mov", {"-c:v", "prores_ks"}},
                                                                       {"png.mov", {"-c:v", "png"}},
                                                                       {"mjpeg.mov", {"-c:v", "mjpeg"}}}) {
        const std::string movie = makeMovie(name, 12, options);
        const auto [position, size] = placeOfFrame(movie, 6);
        std::string content = contentOf(movie);
        std::fill_n(content.begin() + static_cast<std::ptrdiff_t>(position), size, '\x5a');
        write(movie, content);
        open(movie);
        ASSERT_EQ(openStatus, 0) << name;
        for (int number = 0; number < 12; ++number) {
            read(number);
            EXPECT_EQ(readStatus, number == 6 ? -8960 : 0) << name << " " << number;
        }
        for (int number = 11; number >= 0; number -= 3) {
            read(number);
            EXPECT_EQ(readStatus, 0) << name << " " << number;
        }
        EXPECT_NE(errors().find("frame 6 of " + movie), std::string::npos);
    }
}

TEST_F(BadMovieTest, SurvivesDamageAnywhere) {
    const std::string movie = makeMovie(
        "a.mov", 12, {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "6", "-movflags", "faststart"});
    const std::string content = contentOf(movie);
    std::mt19937 random(5);
    RawController raw(newBridgeName(), "read");
    for (int round = 0; round < 60; ++round) {
        std::string damaged = content;
        for (int byte = 0; byte < 1 + round / 4; ++byte)
            damaged[random() % (round % 2 == 0 ? damaged.size() : 1500)] = static_cast<char>(random());
        write(path("damaged.mov"), damaged);
        if (raw.ask("R00000001:" + path("damaged.mov") + ":1") != "0")
            continue;
        for (const int number : {0, 11, 5})
            EXPECT_FALSE(raw.ask("R00000000:" + std::to_string(number)).empty() &&
                         Platform::endOfChild(raw.workerProcess()).has_value());
        EXPECT_EQ(raw.ask("R00000003"), "0");
    }
}

TEST_F(BadMovieTest, KeepsReadingAMovieThatWasReplaced) {
    const std::string movie = makeMovie("a.mov", 30, {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "10"});
    const auto whole = framesByFfmpeg(movie, "format=rgb24", 160 * 96 * 3);
    open(movie);
    EXPECT_FALSE(read(0).empty());
    write(path("new"), "something else");
    std::filesystem::rename(path("new"), movie);

    EXPECT_GT(similarity(read(25), whole[25]), 20);
    EXPECT_GT(similarity(read(3), whole[3]), 20);
}

TEST_F(BadMovieTest, RefusesAMovieThatWasOverwritten) {
    const std::string movie = makeMovie("a.mov", 30, {"-c:v", "mjpeg"});
    open(movie);
    EXPECT_FALSE(read(0).empty());
    write(movie, "something else");

    read(1);

    EXPECT_EQ(readStatus, -36);
}

TEST_F(BadMovieTest, ReadsTheSmallestPicture) {
    runFfmpeg({"-f", "lavfi", "-i", "color=lime:size=2x2:rate=25,format=rgb24,crop=1:1", "-frames:v", "2",
               "-c:v", "png", path("rgb.mov")});
    runFfmpeg({"-f", "lavfi", "-i", "color=lime:size=2x2:rate=25,format=rgb24,crop=1:1,format=yuvj420p",
               "-frames:v", "2", "-c:v", "mjpeg", path("yuv.mov")});
    for (const char* name : {"rgb.mov", "yuv.mov"}) {
        open(path(name));
        const std::vector<float> frame = read(1);
        ASSERT_EQ(frame.size(), 4u) << name;
        EXPECT_NEAR(frame[0], 0, 0.02f);
        EXPECT_NEAR(frame[1], 1, 0.02f);
        EXPECT_NEAR(frame[2], 0, 0.02f);
    }
}

TEST_F(BadMovieTest, ReadsALargePicture) {
    runFfmpeg({"-f", "lavfi", "-i", "color=blue:size=8192x4320:rate=25,format=yuv420p", "-frames:v", "1",
               "-c:v", "mjpeg", path("large.mov")});
    open(path("large.mov"));

    const std::vector<float> frame = read(0);

    ASSERT_EQ(frame.size(), 8192u * 4320 * 4);
    for (const std::size_t pixel : {std::size_t{0}, std::size_t{8192 * 2160 + 4096}, frame.size() / 4 - 1}) {
        EXPECT_NEAR(frame[4 * pixel], 0, 0.03f);
        EXPECT_NEAR(frame[4 * pixel + 2], 1, 0.03f);
        EXPECT_EQ(frame[4 * pixel + 3], 1.0f);
    }
}

}  // namespace
}  // namespace Morvane::Testing
