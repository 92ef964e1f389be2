#include <algorithm>
#include <limits>

#include "tests/unit/writer/WriterFixture.h"

namespace Morvane::Writer {
namespace {

using Calls = std::vector<std::string>;
using Kex::Image::Channel;

const Calls frameCalls(int frame) {
    return {"acquireBuffer 16", "addFrame " + std::to_string(frame), "releaseBuffer"};
}

class MovWriterRender : public Testing::WriterFixture {
protected:
    const Calls opening = {"initialise", "setCodec 0",
                           "configure 2x2 key 1 quality 4 settings \"\" fps 24.000000", "openFile mode 1"};
};

TEST_F(MovWriterRender, OpensTheMovieAtTheFirstFrameOnly) {
    make();

    renderFrame(1);
    Calls expected = opening;
    const Calls first = frameCalls(1);
    expected.insert(expected.end(), first.begin(), first.end());
    EXPECT_EQ(calls(), expected);

    renderFrame(2);
    EXPECT_EQ(calls(), frameCalls(2));
    EXPECT_EQ(script.openedPaths, std::vector<std::string>{node->writer()->temporaryFile()});
}

TEST_F(MovWriterRender, LaysPixelsInterleavedWithTheTopRowFirst) {
    picture = std::make_unique<Kex::Image::Testing::TestPicture>(application, [](int, int y, Channel z) {
        return z == Kex::Image::Chan_Alpha ||
                       (y == 0 ? z == Kex::Image::Chan_Red : z == Kex::Image::Chan_Green)
                   ? 1.0F
                   : 0.0F;
    });
    node->setInput(0, picture.get());
    make();

    renderFrame(1);

    const std::vector<float> expected = {0, 1, 0, 1, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1};
    ASSERT_EQ(script.frames.size(), 1U);
    EXPECT_EQ(script.frames[0], expected);
}

TEST_F(MovWriterRender, AppliesTheDefaultCurveToColoursAndNotToAlpha) {
    node->setLut(nullptr);
    make();

    renderFrame(1);

    const auto expected = static_cast<float>(Kex::Image::LUT::getLut(6)->toStored(0.5));
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(script.frames[0][i], i % 4 == 3 ? 0.5F : expected, 1e-6);
    }
}

TEST_F(MovWriterRender, AsksForTheWholePictureOnceAndForEachRowFromTheTop) {
    node->setFormat({3, 4});
    make();

    renderFrame(1);

    EXPECT_EQ(picture->requests, (std::vector<std::vector<int>>{{0, 0, 3, 4, 15, 1}}));
    EXPECT_EQ(picture->rows, (std::vector<int>{3, 2, 1, 0}));
}

TEST_F(MovWriterRender, ReportsAThirdOfTheProgressWhileRowsComeIn) {
    make();

    renderFrame(1);

    EXPECT_EQ(application.fractions, (std::vector<double>{0.5 / 3, 1.0 / 3, 0.66, 1.0}));
}

TEST_F(MovWriterRender, CutsFrameNumbersTowardsZero) {
    make();

    for (const double frame : {12.7, -0.5, -3.9, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        renderFrame(frame);
    }

    Calls frames = calls();
    frames.erase(std::remove_if(frames.begin(), frames.end(),
                                [](const std::string& call) { return call.compare(0, 8, "addFrame") != 0; }),
                 frames.end());
    EXPECT_EQ(frames,
              (Calls{"addFrame 12", "addFrame 0", "addFrame -3", "addFrame 2147483647", "addFrame 0"}));
}

TEST_F(MovWriterRender, EncodesWhatThereIsWhenTheRenderIsAborted) {
    application.questionsBeforeAbort = 1;
    make();

    renderFrame(1);

    EXPECT_EQ(picture->rows, std::vector<int>{1});
    Calls tail = calls();
    tail.erase(tail.begin(), tail.begin() + static_cast<std::ptrdiff_t>(opening.size()));
    EXPECT_EQ(tail, frameCalls(1));
    EXPECT_EQ(script.frames[0][0], 0.5F);
    EXPECT_EQ(script.frames[0][8], -99.0F);
    EXPECT_EQ(application.fractions, (std::vector<double>{0.5 / 3, 0.66, 1.0}));
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterRender, TriesToOpenAgainAtTheNextFrameWithTheSameName) {
    script.openResults = {-54};
    make();

    renderFrame(1);
    EXPECT_EQ(calls(), opening);
    EXPECT_EQ(application.errors, Calls{"Couldn't open file\n"});

    renderFrame(2);
    Calls expected = opening;
    const Calls second = frameCalls(2);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(application.errors.size(), 1U);
    ASSERT_EQ(script.openedPaths.size(), 2U);
    EXPECT_EQ(script.openedPaths[0], script.openedPaths[1]);
}

TEST_F(MovWriterRender, ReportsAFrameThatCouldNotBeEncodedAndGoesOn) {
    script.frameResult = -8960;
    make();

    renderFrame(1);
    renderFrame(2);

    EXPECT_EQ(application.errors, (Calls{"Couldn't encode frame\n", "Couldn't encode frame\n"}));
    EXPECT_EQ(application.fractions.back(), 1.0);
    EXPECT_EQ(calls().back(), "releaseBuffer");
}

TEST_F(MovWriterRender, ReportsAFrameForWhichThereIsNoSharedMemory) {
    script.hasBuffer = false;
    make();

    renderFrame(1);

    EXPECT_EQ(application.errors, Calls{"Couldn't encode frame\n"});
    EXPECT_EQ(calls().back(), "acquireBuffer 16");

    script.hasBuffer = true;
    renderFrame(2);
    EXPECT_EQ(calls(), frameCalls(2));
}

TEST_F(MovWriterRender, SaysAtEveryFrameThatThereIsNoController) {
    script.isMissing = true;
    make();

    node->execute(1);
    node->execute(2);

    EXPECT_EQ(application.errors, (Calls{"Quicktime not installed", "Quicktime not installed"}));
}

TEST_F(MovWriterRender, FinishesInSilenceWithoutAController) {
    script.isMissing = true;
    make();

    node->finish();

    EXPECT_TRUE(application.errors.empty());
    EXPECT_TRUE(calls().empty());
}

TEST_F(MovWriterRender, FinishesWithTheMovieUnderItsName) {
    make();
    renderFrame(1);
    calls();

    node->finish();

    EXPECT_EQ(calls(), (Calls{"finishVideo", "closeFile flat"}));
    EXPECT_TRUE(std::filesystem::exists(output()));
    EXPECT_TRUE(application.errors.empty());
    EXPECT_TRUE(application.warnings.empty());
}

TEST_F(MovWriterRender, ClosesWithoutFastStartWhenThatIsOff) {
    make();
    change("Flatten", 0);
    renderFrame(1);

    node->finish();

    EXPECT_EQ(calls().back(), "closeFile");
}

TEST_F(MovWriterRender, FinishesAlsoWhenNoFrameWasEverOpened) {
    make();

    node->finish();

    EXPECT_EQ(calls(), (Calls{"finishVideo", "closeFile flat"}));
    EXPECT_EQ(application.errors.size(), 1U);  // nothing to rename
    EXPECT_FALSE(std::filesystem::exists(output()));
}

TEST_F(MovWriterRender, RenamesAlsoAfterAFailedClose) {
    script.closeResult = -34;
    make();
    renderFrame(1);

    node->finish();

    EXPECT_EQ(application.errors, Calls{"Failed to properly close file"});
    EXPECT_TRUE(std::filesystem::exists(output()));
}

TEST_F(MovWriterRender, OpensANewMovieForTheNextRender) {
    make();
    renderFrame(1);
    node->finish();
    calls();

    renderFrame(1);

    Calls expected = opening;
    const Calls first = frameCalls(1);
    expected.insert(expected.end(), first.begin(), first.end());
    EXPECT_EQ(calls(), expected);
    ASSERT_EQ(script.openedPaths.size(), 2U);
    EXPECT_NE(script.openedPaths[0], script.openedPaths[1]);
}

class MovWriterSound : public Testing::WriterFixture {
protected:
    /// The audio request of a whole render.
    std::string audioCall() {
        renderFrame(1);
        calls();
        node->finish();
        const Calls made = calls();
        return made.size() == 3 ? made[1] : "none";
    }
};

TEST_F(MovWriterSound, HasItsOffsetInSeconds) {
    make();
    change("audiofile", std::string("/a.wav"));
    change("audio_offset", 48);

    EXPECT_EQ(audioCall(), "addAudioFile /a.wav 48.000000");
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterSound, HasItsOffsetInFramesTurnedIntoSeconds) {
    make();
    change("audiofile", std::string("/a.wav"));
    change("audio_offset", 48);
    change("units", 1);

    EXPECT_EQ(audioCall(), "addAudioFile /a.wav 2.000000");
}

TEST_F(MovWriterSound, MayBeginBeforeThePicture) {
    make();
    change("audiofile", std::string("/a.wav"));
    change("audio_offset", -12);
    change("units", 1);
    change("fps", 23.976);

    EXPECT_EQ(audioCall(), "addAudioFile /a.wav " + std::to_string(-12 / 23.976F));
}

TEST_F(MovWriterSound, IsLeftOutWithoutAFile) {
    make();

    EXPECT_EQ(audioCall(), "none");
}

TEST_F(MovWriterSound, IsLeftOutWhenTheFileNameIsEmpty) {
    make();
    change("audiofile", std::string());

    EXPECT_EQ(audioCall(), "none");
}

class MovWriterTimeCode : public Testing::WriterFixture {
protected:
    void use(const char* key, const Kex::Image::MetaData::Property& value) {
        picture->metadata.setData(key, value);
    }

    /// What a whole render sends between finishVideo and closeFile.
    Calls trackCalls() {
        renderFrame(1);
        return finishCalls();
    }

    Calls finishCalls() {
        calls();
        node->finish();
        Calls made = calls();
        EXPECT_EQ(made.front(), "finishVideo");
        EXPECT_EQ(made.back(), "closeFile flat");
        return {made.begin() + 1, made.end() - 1};
    }

    const std::string warning =
        "Skipping time code track generation, need both input/timecode and quicktime/reel present in the "
        "metadata!";
};

TEST_F(MovWriterTimeCode, IsATrackWithRateStartAndReel) {
    use("input/timecode", "01:00:00:00");
    use("quicktime/reel", "A001");
    make();
    change("writeTimeCode", 1);
    change("fps", 25);

    EXPECT_EQ(trackCalls(), Calls{"addTimecodeTrack 25/1 90000 \"A001\""});
    EXPECT_TRUE(application.warnings.empty());
}

TEST_F(MovWriterTimeCode, IsReadAsNonDropAt2997) {
    use("input/timecode", "00:10:00;00");
    make();
    change("writeTimeCode", 1);
    change("fps", 29.97);

    EXPECT_EQ(trackCalls(), Calls{"addTimecodeTrack 30000/1001 18000 \"\""});
}

TEST_F(MovWriterTimeCode, NeedsNoReelAlthoughTheWarningSaysSo) {
    use("input/timecode", "00:00:01:00");
    make();
    change("writeTimeCode", 1);

    EXPECT_EQ(trackCalls(), Calls{"addTimecodeTrack 24/1 24 \"\""});
    EXPECT_TRUE(application.warnings.empty());
}

TEST_F(MovWriterTimeCode, IsSkippedWithAWarningWhenOnlyTheReelIsThere) {
    use("quicktime/reel", "A001");
    make();
    change("writeTimeCode", 1);

    EXPECT_TRUE(trackCalls().empty());
    EXPECT_EQ(application.warnings, Calls{warning});
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterTimeCode, IsSkippedInSilenceWhenItsTextIsEmpty) {
    use("input/timecode", "");
    use("quicktime/reel", "A001");
    make();
    change("writeTimeCode", 1);

    EXPECT_TRUE(trackCalls().empty());
    EXPECT_TRUE(application.warnings.empty());
}

TEST_F(MovWriterTimeCode, IsLeftOutUnlessItIsAskedFor) {
    use("input/timecode", "01:00:00:00");
    make();

    EXPECT_TRUE(trackCalls().empty());
    EXPECT_TRUE(application.warnings.empty());
}

TEST_F(MovWriterTimeCode, StartsWhereTheFirstFrameSaid) {
    use("input/timecode", "01:00:00:00");
    make();
    change("writeTimeCode", 1);
    renderFrame(1);

    use("input/timecode", "02:00:00:00");
    renderFrame(2);

    EXPECT_EQ(finishCalls(), Calls{"addTimecodeTrack 24/1 86400 \"\""});
}

TEST_F(MovWriterTimeCode, KeepsTheStartOfTheRenderBeforeWhereTheFirstFrameHasNone) {
    use("input/timecode", "00:00:10:00");
    make();
    change("writeTimeCode", 1);
    trackCalls();
    picture->metadata = {};
    renderFrame(1);
    use("input/timecode", "05:00:00:00");

    EXPECT_EQ(finishCalls(), Calls{"addTimecodeTrack 24/1 240 \"\""});
}

TEST_F(MovWriterTimeCode, SendsTheInvalidStartForATextThatIsNoTimeCode) {
    use("input/timecode", "99:99");
    make();
    change("writeTimeCode", 1);

    EXPECT_EQ(trackCalls(), Calls{"addTimecodeTrack 24/1 -9223372036854775808 \"\""});
}

TEST_F(MovWriterTimeCode, ComesAfterTheSound) {
    use("input/timecode", "00:00:01:00");
    make();
    change("writeTimeCode", 1);
    change("audiofile", std::string("/a.wav"));

    EXPECT_EQ(trackCalls(), (Calls{"addAudioFile /a.wav 0.000000", "addTimecodeTrack 24/1 24 \"\""}));
}

}  // namespace
}  // namespace Morvane::Writer
