#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "property/PropertyList.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/real_worker/WorkerFixture.h"
#include "tests/integration/worker_write/WalkMovies.h"

namespace Morvane::Testing {
namespace {

constexpr int width = 32;
constexpr int height = 16;

/// Whole movies through the writer's controller, read back by programs that are not ours.
class WriteMovieTest : public WorkerFixture {
protected:
    void SetUp() override {
        WorkerFixture::SetUp();
        sut = std::make_unique<QuickTime::QuickTimeCodecWriterIPCController>(newBridgeName());
    }
    void TearDown() override {
        sut.reset();
        walkMoviesIn(folder);
        WorkerFixture::TearDown();
    }

    int codecIndex(const std::string& type) {
        const char* const* list = sut->codecList();
        for (int index = 0; list[index] != nullptr; ++index)
            if (std::string(list[index]).substr(0, 4) == type)
                return index;
        ADD_FAILURE() << "no codec " << type;
        return 0;
    }

    void configure(const std::string& type, const std::string& settings = "", float rate = 25) {
        sut->setCodec(codecIndex(type));
        sut->configure(width, height, 1, 4, false, settings, rate);
    }

    static float sample(int frame, int x, int y, int channel) {
        return static_cast<float>((frame * 40 + x * 7 + y * 11 + channel * 60) % 256) / 255.0f;
    }

    int addFrame(int frame) {
        char* buffer = sut->acquireBuffer(width * height * 4);
        auto* pixels = reinterpret_cast<float*>(buffer);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int channel = 0; channel < 4; ++channel)
                    *pixels++ = channel == 3 ? 1.0f : sample(frame, x, y, channel);
        const int status = sut->addFrame(frame, buffer, false);
        sut->releaseBuffer(buffer);
        return status;
    }

    int writeMovie(const std::string& movie, int frames) {
        EXPECT_EQ(sut->openFile(movie, 1), 0);
        for (int frame = 0; frame < frames; ++frame)
            EXPECT_EQ(addFrame(frame), 0);
        sut->finishVideo();
        return sut->closeFile(true);
    }

    std::string probe(const std::string& movie, const std::string& entries, const std::string& stream = "v") {
        return outputOf({"ffprobe", "-v", "error", "-count_frames", "-select_streams", stream,
                         "-show_entries", entries, "-of", "default=nw=1:nk=1", movie});
    }

    std::unique_ptr<QuickTime::QuickTimeCodecWriterIPCController> sut;
};

TEST_F(WriteMovieTest, GivesBackTheSamplesOfALosslessCodec) {
    const std::string movie = path("lossless.mov");
    configure("rle ");

    ASSERT_EQ(writeMovie(movie, 3), 0);

    const std::string raw =
        outputOf({"ffmpeg", "-v", "error", "-i", movie, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    ASSERT_EQ(raw.size(), 3u * width * height * 3);
    std::size_t at = 0;
    for (int frame = 0; frame < 3; ++frame)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int channel = 0; channel < 3; ++channel)
                    ASSERT_EQ(static_cast<unsigned char>(raw[at++]),
                              static_cast<int>(std::lround(sample(frame, x, y, channel) * 255)));
    EXPECT_EQ(errors(), "");
}

TEST_F(WriteMovieTest, WritesOneMovieAfterTheOther) {
    configure("mjpa");
    EXPECT_EQ(writeMovie(path("first.mov"), 4), 0);
    configure("png ", "", 24);
    EXPECT_EQ(writeMovie(path("second.mov"), 2), 0);

    EXPECT_EQ(probe(path("first.mov"), "stream=codec_tag_string,nb_read_frames"), "mjpa\n4\n");
    EXPECT_EQ(probe(path("second.mov"), "stream=codec_tag_string,nb_read_frames"), "png \n2\n");
}

TEST_F(WriteMovieTest, RefusesAnExistingFileWhenItIsToldTo) {
    const std::string movie = path("kept.mov");
    std::ofstream(movie) << "precious";
    configure("mjpa");

    EXPECT_EQ(sut->openFile(movie, 0), -48);

    EXPECT_EQ(std::filesystem::file_size(movie), 8u);
    EXPECT_NE(errors().find(movie), std::string::npos);
    EXPECT_NE(errors().find("(-48)"), std::string::npos);
}

TEST_F(WriteMovieTest, LeavesAnExistingFileAloneWhenTheSettingsAreRefused) {
    const std::string movie = path("kept.mov");
    std::ofstream(movie) << "precious";
    configure("mjpa", "colour=ultraviolet");

    EXPECT_EQ(sut->openFile(movie, 1), -8961);

    EXPECT_EQ(std::filesystem::file_size(movie), 8u);
}

TEST_F(WriteMovieTest, RefusesToOpenInAFolderThatIsNotThere) {
    configure("mjpa");

    EXPECT_EQ(sut->openFile(path("nowhere/a.mov"), 1), -43);
    EXPECT_EQ(sut->openFile(folder.string(), 1), -50);
}

TEST_F(WriteMovieTest, OpensAgainAfterARefusal) {
    configure("mjpa", "nonsense=1");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), -8961);
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), -8961);
    configure("mjpa");

    EXPECT_EQ(writeMovie(path("a.mov"), 1), 0);
}

TEST_F(WriteMovieTest, PutsTheTimeCodeIntoATrack) {
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->finishVideo();
    sut->addTimecodeTrack(Timecode::FrameRate(25, false), 90000, "A001");
    EXPECT_EQ(sut->closeFile(true), 0);

    EXPECT_EQ(probe(path("a.mov"), "stream_tags=timecode,reel_name", "d"), "A001\n01:00:00:00\n");
}

TEST_F(WriteMovieTest, ReplacesTheSettingsTimeCodeByTheHosts) {
    configure("mjpa", "timecode=05\\:00\\:00\\:00:reel=B002");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->addTimecodeTrack(Timecode::FrameRate(25, false), 90000, "A001");
    EXPECT_EQ(sut->closeFile(true), 0);

    EXPECT_EQ(probe(path("a.mov"), "stream_tags=timecode,reel_name", "d"), "A001\n01:00:00:00\n");
}

TEST_F(WriteMovieTest, DropsTheSettingsTimeCodeWhenTheHostNamesNone) {
    configure("mjpa", "timecode=05\\:00\\:00\\:00:reel=B002");
    EXPECT_EQ(writeMovie(path("a.mov"), 2), 0);

    EXPECT_EQ(probe(path("a.mov"), "stream=codec_tag_string", "d"), "");
}

TEST_F(WriteMovieTest, SaysAtTheEndThatTheSoundIsMissing) {
    std::ofstream(path("noise.wav")) << "this is no sound";
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->finishVideo();
    sut->addAudioFile(path("noise.wav").c_str(), 0);

    EXPECT_NE(sut->closeFile(true), 0);

    EXPECT_EQ(probe(path("a.mov"), "stream=nb_read_frames"), "1\n");
    EXPECT_NE(errors().find("noise.wav"), std::string::npos);
}

TEST_F(WriteMovieTest, AddsSamplesInTheFormThatWasSet) {
    const std::vector<std::int16_t> samples = {1, -1, 2, -2, 3, -3, 4, -4};
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->setSampleFormat(2, false, 48000, "stereo");
    EXPECT_EQ(sut->addSamples(0, 4, reinterpret_cast<const char*>(samples.data())), 0);
    EXPECT_EQ(sut->addSamples(2, 1, reinterpret_cast<const char*>(samples.data())), -50);
    sut->finishSamples();
    sut->finishVideo();
    EXPECT_EQ(sut->closeFile(true), 0);

    const std::string raw = outputOf({"ffmpeg", "-v", "error", "-i", path("a.mov"), "-f", "s16le", "-"});
    ASSERT_GE(raw.size(), 16u);
    EXPECT_EQ(raw.substr(0, 16), std::string(reinterpret_cast<const char*>(samples.data()), 16));
}

TEST_F(WriteMovieTest, RefusesSamplesOfAFormThatCannotBe) {
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->setSampleFormat(5, true, 48000, "");

    EXPECT_EQ(sut->addSamples(0, 1, "abcd"), -8961);

    EXPECT_EQ(sut->addSamples(0, 1, "abcd"), -50);
    EXPECT_EQ(sut->closeFile(true), 0);
}

TEST_F(WriteMovieTest, SaysAtTheEndThatSamplesNeverHadAForm) {
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->setSampleFormat(5, true, 48000, "");

    EXPECT_EQ(sut->closeFile(true), -8961);

    EXPECT_EQ(probe(path("a.mov"), "stream=nb_read_frames"), "1\n");
}

/// The worker and its files can grow no further than so many bytes: a disk that is full.
class FullDiskTest : public WriteMovieTest {
protected:
    void SetUp() override {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limited = {rlim_t{5} << 20, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
        WriteMovieTest::SetUp();
    }
    void TearDown() override {
        WriteMovieTest::TearDown();
        setrlimit(RLIMIT_FSIZE, &before);
    }

    /// Frames until one is refused; its status.
    int addFramesUntilOneIsRefused() {
        for (int frame = 0; frame < 20000; ++frame)
            if (const int status = addFrame(frame); status != 0)
                return status;
        return 0;
    }

    int framesIn(const std::string& movie) { return std::stoi(probe(movie, "stream=nb_read_frames")); }

private:
    rlimit before = {};
};

TEST_F(FullDiskTest, IsAnsweredOnceByTheNextFrameAndTheMovieIsClosed) {
    configure("raw ");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);

    EXPECT_EQ(addFramesUntilOneIsRefused(), -34);

    EXPECT_EQ(addFrame(1), -50);
    sut->finishVideo();
    EXPECT_EQ(sut->closeFile(true), 0);
    EXPECT_GE(framesIn(path("a.mov")), 1000);
    EXPECT_NE(errors().find("cannot write " + path("a.mov")), std::string::npos);
}

TEST_F(WriteMovieTest, PutsPropertiesIntoTheMovie) {
    const auto list = [](const std::string& name, const std::string& value) {
        Property::PropertyList properties;
        properties.push_back(Property::makeProperty("S", name, value));
        return properties;
    };
    configure("mjpa", "meta.com.corvel.shot=bb_010");
    sut->setProperties(list("title", "before: it is open"));
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    EXPECT_EQ(addFrame(1), 0);
    sut->setProperties(list("comment", "while it is open"));
    EXPECT_EQ(sut->closeFile(true), 0);

    const std::string tags =
        outputOf({"ffprobe", "-v", "error", "-show_entries", "format_tags", path("a.mov")});
    EXPECT_NE(tags.find("title=before: it is open"), std::string::npos) << tags;
    EXPECT_NE(tags.find("comment=while it is open"), std::string::npos) << tags;
    EXPECT_NE(tags.find("com.corvel.shot=bb_010"), std::string::npos) << tags;
}

TEST_F(WriteMovieTest, TakesThePixelAspectOnlyWhenItIsToBeUsed) {
    configure("mjpa", "aspect=2/1");
    EXPECT_EQ(writeMovie(path("square.mov"), 1), 0);
    sut->setUseFormatAspect(true);
    EXPECT_EQ(writeMovie(path("wide.mov"), 1), 0);

    EXPECT_NE(probe(path("square.mov"), "stream=sample_aspect_ratio"), "2:1\n");
    EXPECT_EQ(probe(path("wide.mov"), "stream=sample_aspect_ratio"), "2:1\n");
}

TEST_F(WriteMovieTest, KeepsAnExactRate) {
    configure("mjpa", "", 23.976f);
    EXPECT_EQ(writeMovie(path("a.mov"), 3), 0);

    EXPECT_EQ(probe(path("a.mov"), "stream=r_frame_rate"), "24000/1001\n");
}

TEST_F(WriteMovieTest, TellsWhatWasConfigured) {
    const int index = codecIndex("apch");
    sut->setCodec(index);
    sut->configure(width, height, 7, 2, false, "", 29.97f);

    EXPECT_EQ(sut->getCodec(), index);
    EXPECT_EQ(sut->getKeyFrameRate(), 7);
    EXPECT_EQ(sut->getQuality(), 2);
    EXPECT_FLOAT_EQ(sut->getFrameRate(), 29.97f);
}

TEST_F(WriteMovieTest, LeavesTheSettingsAsTheyAreWithoutADisplay) {
    configure("mjpa");

    EXPECT_EQ(sut->editSettings("any=text"), "any=text");

    EXPECT_NE(errors().find("display"), std::string::npos);
}

TEST_F(WriteMovieTest, TurnsSettingsIntoPropertiesAndBack) {
    configure("avc1");
    const std::string defaults = sut->textOperation7("");
    EXPECT_FALSE(defaults.empty());
    EXPECT_FALSE(sut->textOperation6(defaults).empty());

    const std::string list = sut->textOperation21(defaults);

    Property::PropertyList properties;
    Property::readPropertyList(list, properties);
    EXPECT_GT(properties.size(), 5u);
    EXPECT_EQ(sut->textOperation22(list), defaults);
}

TEST_F(WriteMovieTest, AnswersSettingsThatAreRefusedWithTheStatus) {
    configure("mjpa");

    EXPECT_EQ(sut->textOperation6("nonsense=1"), "Error: -8961");
    EXPECT_EQ(sut->textOperation21("nonsense=1"), "Error: -8961");
}

TEST_F(WriteMovieTest, RefusesToCloseAMovieWithoutFrames) {
    configure("mjpa");
    EXPECT_EQ(sut->openFile(path("a.mov"), 1), 0);
    sut->finishVideo();

    EXPECT_EQ(sut->closeFile(true), -50);
    EXPECT_EQ(sut->closeFile(true), -50);
}

}  // namespace
}  // namespace Morvane::Testing
