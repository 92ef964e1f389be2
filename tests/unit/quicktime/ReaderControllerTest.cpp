#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>
#include <map>

#include "quicktime/QuickTimeCodecReaderIPCController.h"
#include "tests/unit/quicktime/ControllerFixture.h"

namespace {

using Morvane::QuickTime::createReaderController;
using Morvane::QuickTime::QuickTimeCodecReaderIPCController;
using Morvane::Testing::Texts;
using Metadata = std::map<std::string, std::string>;

struct Info {
    std::int32_t width, height, channels, aspectNumerator, aspectDenominator, bits, answer;
    float frameRate;
};

class ReaderController
    : public Morvane::Testing::ControllerFixture<QuickTimeCodecReaderIPCController, createReaderController> {
protected:
    Info info() {
        Info info{};
        info.answer = sut->getInfo(info.width, info.height, info.channels, info.frameRate,
                                   info.aspectNumerator, info.aspectDenominator, info.bits);
        return info;
    }

    Metadata metadata() {
        Metadata pairs{{"stale", "x"}};
        sut->getMetadata(pairs);
        return pairs;
    }
};

TEST_F(ReaderController, StartsItsWorkerInReadMode) {
    sut->closeFile();

    ASSERT_EQ(recording.arguments().size(), 3u);
    EXPECT_EQ(recording.arguments()[2], "read");
}

TEST_F(ReaderController, OpensAndClosesAFile) {
    recording.answer("R00000001", "-43");
    recording.answer("R00000003", "-36");

    EXPECT_EQ(sut->openFile("/a:b.mov", 1), -43);
    EXPECT_EQ(sut->closeFile(), -36);

    EXPECT_EQ(sent(), (Texts{R"(R00000001:"/a:b.mov":1)", "R00000003"}));
}

// Deliberate: questions that are answered without asking.
TEST_F(ReaderController, HasFixedAnswers) {
    sut->ignore();

    EXPECT_EQ(sut->fixedEight(), 8);
    EXPECT_EQ(sut->fixedZero(), 0);
    EXPECT_EQ(sut->fixedZeroToo(), 0);
    EXPECT_EQ(sut->fixedOne(), 1);
    EXPECT_EQ(sent(), Texts{});
}

TEST_F(ReaderController, AsksForTheDescriptionOnce) {
    recording.answer("R00000002", "1920 1080 4 23.976 10 11 240 16");

    const Info first = info();
    info();

    EXPECT_EQ(sut->getFrameCount(), 240);
    EXPECT_EQ(first.width, 1920);
    EXPECT_EQ(first.height, 1080);
    EXPECT_EQ(first.channels, 4);
    EXPECT_EQ(first.frameRate, 23.976f);
    EXPECT_EQ(first.aspectNumerator, 10);
    EXPECT_EQ(first.aspectDenominator, 11);
    EXPECT_EQ(first.bits, 16);
    EXPECT_EQ(first.answer, 1080);
    EXPECT_EQ(sent(), Texts{"R00000002"});
}

TEST_F(ReaderController, AsksForTheDescriptionToCountFrames) {
    recording.answer("R00000002", "2 2 3 25 1 1 7 8");

    EXPECT_EQ(sut->getFrameCount(), 7);
    EXPECT_EQ(sut->getFrameCount(), 7);

    EXPECT_EQ(sent(), Texts{"R00000002"});
}

TEST_F(ReaderController, KeepsTheNumbersBehindACutInTheDescription) {
    recording.answer("R00000002", "-1 1080 4 x 10 11 240 16", 1);
    recording.answer("R00000002", "", 2);

    EXPECT_EQ(info().height, 1080);
    const Info second = info();

    EXPECT_EQ(second.width, -1);
    EXPECT_EQ(second.height, 1080);
    EXPECT_EQ(second.channels, 4);
    EXPECT_EQ(second.frameRate, 0.0f);
    EXPECT_EQ(second.aspectNumerator, 0);
    EXPECT_EQ(sent(), (Texts{"R00000002", "R00000002"}));
}

TEST_F(ReaderController, ReadsAFrame) {
    const std::string frame = "Err" + std::string(61, '\x42');
    recording.answer("R00000002", "2 2 4 25 1 1 7 8");
    recording.answerBytes("R00000000", frame);
    std::string destination(80, 'x');
    info();
    sent();

    EXPECT_EQ(sut->readFrame(12, destination.data()), 0);

    EXPECT_EQ(sent(), Texts{"R00000000:12"});
    EXPECT_EQ(destination, frame + std::string(16, 'x'));
}

TEST_F(ReaderController, LeavesTheDestinationAloneOnAnError) {
    recording.answer("R00000002", "2 2 4 25 1 1 7 8");
    recording.answer("R00000000", "Error: -8960" + std::string(100, ' '));
    std::string destination(64, 'x');
    info();

    EXPECT_EQ(sut->readFrame(1, destination.data()), -8960);

    EXPECT_EQ(destination, std::string(64, 'x'));
}

TEST_F(ReaderController, AnswersAFrameThatIsCutShortAsAnInputError) {
    recording.answer("R00000002", "100 100 4 25 1 1 7 8");
    recording.answerBytes("R00000000", "abc");
    std::string destination(160000, 'x');
    info();

    EXPECT_EQ(sut->readFrame(1, destination.data()), -36);

    EXPECT_EQ(destination, std::string(160000, 'x'));
}

TEST_F(ReaderController, RefusesAFrameOfASizeThatNoMemoryHas) {
    recording.answer("R00000002", "-2 2 4 25 1 1 7 8");
    char destination = 'x';
    info();

    EXPECT_EQ(sut->readFrame(1, &destination), -36);

    EXPECT_EQ(destination, 'x');
}

TEST_F(ReaderController, CopiesNothingBeforeThereIsADescription) {
    char destination = 'x';

    EXPECT_EQ(sut->readFrame(0, &destination), 0);

    EXPECT_EQ(destination, 'x');
}

TEST_F(ReaderController, AsksForMetadataUntilThereAreSome) {
    recording.answer("R00000004", "", 1);
    recording.answer("R00000004", "a:1:b:2:a:3", 2);

    EXPECT_EQ(metadata(), Metadata{});
    // Deliberate: a key keeps its first value.
    EXPECT_EQ(metadata(), (Metadata{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(metadata(), (Metadata{{"a", "1"}, {"b", "2"}}));

    EXPECT_EQ(sent(), (Texts{"R00000004", "R00000004"}));
}

TEST_F(ReaderController, DropsAnOddLastFieldOfTheMetadata) {
    recording.answer("R00000004", R"("a:b":x\"y:c)");

    EXPECT_EQ(metadata(), (Metadata{{"a:b", "x\"y"}}));
}

TEST_F(ReaderController, KeepsLargeMetadata) {
    const std::string large(1 << 20, 'v');
    recording.answer("R00000004", "a:" + large);

    EXPECT_EQ(metadata(), (Metadata{{"a", large}}));
}

TEST_F(ReaderController, AppendsProperties) {
    recording.answer("R00000005", "I:tracks:2:S:codec:a,b");
    Morvane::Property::PropertyList properties;
    Morvane::Property::readPropertyList("I:first:1", properties);

    EXPECT_EQ(sut->getProperties(properties), 0);

    EXPECT_EQ(writePropertyList(properties), "I:first:1:I:tracks:2:S:codec:a,b");
    EXPECT_EQ(sent(), Texts{"R00000005"});
}

TEST_F(ReaderController, PassesOnAMalformedEscape) {
    recording.answer("R00000005", "S:a:\\q");
    recording.answer("R00000004", "a:\\");
    Morvane::Property::PropertyList properties;

    EXPECT_THROW(sut->getProperties(properties), boost::escaped_list_error);
    EXPECT_THROW(metadata(), boost::escaped_list_error);

    EXPECT_TRUE(properties.empty());
    EXPECT_EQ(sut->closeFile(), 0);
}

}  // namespace
