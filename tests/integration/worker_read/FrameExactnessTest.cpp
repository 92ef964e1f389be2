#include <gtest/gtest.h>

#include <random>

#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/worker_read/ReaderFixture.h"

namespace Morvane::Testing {
namespace {

/// Brings YCbCr to RGB by the same interpolation as ours, so that only the rounding to 8 bits differs.
constexpr const char* matrix = "zscale=min=170m:m=gbr:r=full:f=bicubic,format=gbrp,format=rgb24";

/// One way of making a movie.
struct Making {
    const char* name;
    const char* file;
    std::vector<std::string> options;  ///< of the encoding; "gst" first: elements of a GStreamer pipeline
    int shownWidth = 160;
    int shownHeight = 96;
    double leastSimilarity = 57;  ///< dB; the reference is rounded to 8 bits
    const char* filter = matrix;
    std::vector<std::string> copyFrom =
        {};  ///< where given, the movie is copied with these options before its name
    std::vector<std::string> copyTo = {};  ///< and these after it
};

void PrintTo(const Making& making, std::ostream* stream) {
    *stream << making.name;
}

/// Frame N from us is frame N from ffmpeg, in whatever order frames are asked for.
class FrameExactnessTest : public ReaderFixture, public ::testing::WithParamInterface<Making> {
protected:
    void SetUp() override {
        ReaderFixture::SetUp();
        const Making& making = GetParam();
        std::string movie = making.options[0] == "gst" ? makeMovieByGStreamer(making)
                                                       : makeMovie(making.file, 60, making.options);
        if (!making.copyFrom.empty() || !making.copyTo.empty())
            movie = copyMovie(movie);
        const auto samples =
            static_cast<std::size_t>(making.shownWidth) * static_cast<std::size_t>(making.shownHeight) * 3;
        expected = framesByFfmpeg(movie, making.filter, samples);
        ASSERT_GT(expected.size(), 10u);
        open(movie);
        ASSERT_EQ(openStatus, 0);
        ASSERT_EQ(info().width, making.shownWidth);
        ASSERT_EQ(info().height, making.shownHeight);
        ASSERT_EQ(info().frames, static_cast<int>(expected.size()));
    }

    std::string makeMovieByGStreamer(const Making& making) {
        std::vector<std::string> arguments = {"gst-launch-1.0",
                                              "-q",
                                              "videotestsrc",
                                              "pattern=ball",
                                              "num-buffers=60",
                                              "!",
                                              "video/x-raw,width=160,height=96,framerate=25/1"};
        for (std::size_t element = 1; element < making.options.size(); ++element)
            arguments.insert(arguments.end(), {"!", making.options[element]});
        arguments.insert(arguments.end(), {"!", "filesink", "location=" + path(making.file)});
        outputOf(arguments);
        return path(making.file);
    }

    std::string copyMovie(const std::string& movie) {
        std::vector<std::string> arguments = GetParam().copyFrom;
        arguments.insert(arguments.end(), {"-i", movie, "-c", "copy"});
        arguments.insert(arguments.end(), GetParam().copyTo.begin(), GetParam().copyTo.end());
        arguments.push_back(path("copy.mov"));
        runFfmpeg(arguments);
        return path("copy.mov");
    }

    int count() const { return static_cast<int>(expected.size()); }

    void check(int number) {
        const std::vector<float> frame = read(number);
        ASSERT_EQ(readStatus, 0) << number;
        const double right = similarity(frame, expected[static_cast<std::size_t>(number)]);
        EXPECT_GT(right, GetParam().leastSimilarity) << number;
        for (const int other : {number - 1, number + 1}) {
            if (other >= 0 && other < count()) {
                EXPECT_LT(similarity(frame, expected[static_cast<std::size_t>(other)]), right) << number;
            }
        }
    }

    std::vector<std::vector<float>> expected;
};

TEST_P(FrameExactnessTest, ForwardsAndBackwards) {
    for (int number = 0; number < count(); ++number)
        check(number);
    for (int number = count() - 1; number >= 0; --number)
        check(number);
    EXPECT_EQ(errors().find("CorvelQuickTimeHelper-32:"), std::string::npos) << errors();
}

TEST_P(FrameExactnessTest, InAnyOrder) {
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round)
        check(static_cast<int>(random() % static_cast<unsigned>(count())));
    EXPECT_EQ(errors().find("CorvelQuickTimeHelper-32:"), std::string::npos) << errors();
}

const Making makings[] = {
    {"LongGroups",
     "a.mov",
     {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "24", "-bf", "3", "-b_strategy", "0"}},
    {"OneGroup", "a.mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "600", "-bf", "2"}},
    {"OpenGroups",
     "a.mov",
     {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "open-gop=1:keyint=12:bframes=3:b-adapt=0"}},
    {"TenBitHevc",
     "a.mov",
     {"-c:v", "libx265", "-pix_fmt", "yuv420p10le", "-tag:v", "hvc1", "-x265-params",
      "log-level=none:keyint=12"}},
    {"VariableRate",
     "a.mov",
     {"-vf", "select='not(eq(mod(n,7),3))*not(eq(mod(n,5),2))'", "-vsync", "vfr", "-c:v", "libx264",
      "-pix_fmt", "yuv420p", "-g", "15", "-bf", "2"}},
    {"Anamorphic", "a.mov", {"-vf", "setsar=4/3", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "20"}},
    // Without colour: ours is interpolated within each field, the reference's across them.
    {"Interlaced",
     "a.mov",
     {"-vf", "hue=s=0", "-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params",
      "tff=1:keyint=12:bframes=2"}},
    {"Mpeg2", "a.mov", {"-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-bf", "2"}},
    {"Fragmented",
     "a.mp4",
     {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "12", "-bf", "2", "-movflags",
      "frag_keyframe+empty_moov"}},
    {"Mpeg4Visual", "a.mov", {"-c:v", "mpeg4", "-q:v", "2", "-g", "12", "-bf", "2"}},
    {"ProRes", "a.mov", {"-c:v", "prores_ks", "-profile:v", "3"}},
    {"ProRes4444", "a.mov", {"-c:v", "prores_ks", "-profile:v", "4", "-pix_fmt", "yuva444p10le"}},
    {"MotionJpeg", "a.mov", {"-c:v", "mjpeg", "-q:v", "2"}},
    {"Animation", "a.mov", {"-c:v", "qtrle", "-pix_fmt", "rgb24", "-g", "10"}, 160, 96, 100, "format=rgb24"},
    {"Png", "a.mov", {"-c:v", "png", "-pix_fmt", "rgb48be"}, 160, 96, 50, "format=rgb24"},
    {"Uncompressed8", "a.mov", {"-c:v", "rawvideo", "-pix_fmt", "uyvy422", "-tag:v", "2vuy"}},
    {"Uncompressed10", "a.mov", {"-c:v", "v210", "-pix_fmt", "yuv422p10le"}},
    {"UncompressedRgb", "a.mov", {"-c:v", "rawvideo", "-pix_fmt", "argb"}, 160, 96, 100, "format=rgb24"},
    {"Matroska", "a.mkv", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "24", "-bf", "3"}},
    {"TransportStream", "a.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "24", "-bf", "3"}},
    {"Avi", "a.avi", {"-c:v", "mpeg4", "-q:v", "2", "-g", "12", "-bf", "0"}},
    {"AviWithBackwardPrediction", "a.avi", {"-c:v", "mpeg4", "-q:v", "2", "-g", "12", "-bf", "2"}},
    {"BareStream", "a.h264", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "24", "-bf", "3"}},
    {"ProgramStream", "a.mpg", {"-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-bf", "2"}},
    {"Vp9",
     "a.webm",
     {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-lag-in-frames", "10"}},
    {"Ffv1", "a.mkv", {"-c:v", "ffv1", "-pix_fmt", "yuv422p12le"}},
    {"Palette", "a.mov", {"-c:v", "rawvideo", "-pix_fmt", "pal8"}, 160, 96, 100, "format=rgb24"},
    {"Grey", "a.mov", {"-c:v", "png", "-pix_fmt", "gray"}, 160, 96, 100, "format=rgb24"},
    {"FifteenBits", "a.mov", {"-c:v", "rawvideo", "-pix_fmt", "rgb555be"}, 160, 96, 40, "format=rgb24"},
    {"GStreamerOpenH264", "a.mov", {"gst", "openh264enc", "h264parse", "qtmux"}},
    {"GStreamerMotionJpeg", "a.mov", {"gst", "jpegenc", "qtmux"}},
    {"TurnedRight",
     "a.mov",
     {"-c:v", "mjpeg", "-q:v", "2"},
     96,
     160,
     57,
     matrix,
     {},
     {"-metadata:s:v:0", "rotate=90"}},
    {"TurnedLeft",
     "a.mov",
     {"-c:v", "mjpeg", "-q:v", "2"},
     96,
     160,
     57,
     matrix,
     {},
     {"-metadata:s:v:0", "rotate=270"}},
    {"UpsideDown",
     "a.mov",
     {"-c:v", "mjpeg", "-q:v", "2"},
     160,
     96,
     57,
     matrix,
     {},
     {"-metadata:s:v:0", "rotate=180"}},
    // From the middle of a group of pictures on: the pictures before are decoded, but cut away by an edit.
    {"EditList",
     "a.mov",
     {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "24", "-bf", "3"},
     160,
     96,
     57,
     matrix,
     {"-ss", "1.3"}},
};

INSTANTIATE_TEST_SUITE_P(Movies, FrameExactnessTest, ::testing::ValuesIn(makings),
                         [](const auto& making) { return std::string(making.param.name); });

}  // namespace
}  // namespace Morvane::Testing
