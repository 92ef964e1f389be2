#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>

#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "tests/unit/quicktime/ControllerFixture.h"

namespace {

using Morvane::QuickTime::createWriterController;
using Morvane::QuickTime::QuickTimeCodecWriterInterface;
using Morvane::QuickTime::QuickTimeCodecWriterIPCController;
using Morvane::Testing::Recording;
using Morvane::Testing::Texts;
using Morvane::Timecode::FrameRate;

using WriterController =
    Morvane::Testing::ControllerFixture<QuickTimeCodecWriterIPCController, createWriterController>;

TEST_F(WriterController, StartsItsWorkerInWriteMode) {
    sut->finishVideo();

    const Texts arguments = recording.arguments();
    ASSERT_EQ(arguments.size(), 3u);
    EXPECT_EQ(arguments[0], "/CorvelQuickTimeHelper-32");
    EXPECT_EQ(arguments[1].size(), 32u);
    EXPECT_EQ(arguments[2], "write");
}

TEST_F(WriterController, AsksNothingToInitialise) {
    sut->initialise();

    EXPECT_EQ(sent(), Texts{});
}

TEST_F(WriterController, OpensAFile) {
    recording.answer("W00000000", "-48");

    EXPECT_EQ(sut->openFile("/tmp/a b.mov", 1), -48);

    EXPECT_EQ(sent(), Texts{"W00000000:/tmp/a b.mov:1"});
}

TEST_F(WriterController, EscapesWhatItSends) {
    sut->openFile(R"(C:\a "b".mov)", -1);

    EXPECT_EQ(sent(), Texts{R"(W00000000:"C:\\a \"b\".mov":-1)"});
}

// Deliberate: nothing protects a zero byte, so whoever calls sends none.
TEST_F(WriterController, CutsARequestAtAZeroByte) {
    sut->openFile(std::string("a\0b", 3), 1);

    EXPECT_EQ(sent(), Texts{"W00000000:a"});
}

TEST_F(WriterController, FinishesTracks) {
    sut->finishVideo();
    sut->finishSamples();

    EXPECT_EQ(sent(), (Texts{"W00000002", "W00000013"}));
}

TEST_F(WriterController, ClosesAFile) {
    recording.answer("W00000004", "-34", 1);

    EXPECT_EQ(sut->closeFile(true), -34);
    EXPECT_EQ(sut->closeFile(false), 0);

    EXPECT_EQ(sent(), (Texts{"W00000004:1", "W00000004:0"}));
}

TEST_F(WriterController, KeepsItsResultWhenAStatusCannotBeRead) {
    recording.answer("W00000000", "-43");
    recording.answer("W00000004", "what?");
    sut->openFile("a.mov", 1);

    EXPECT_EQ(sut->closeFile(true), -43);
}

TEST_F(WriterController, AddsATimecodeTrack) {
    EXPECT_EQ(sut->addTimecodeTrack(FrameRate(30, true), 108000, "reel:1"), 0);
    EXPECT_EQ(sut->addTimecodeTrack(FrameRate(25, false), -5000000000, ""), 0);

    EXPECT_EQ(sent(), (Texts{R"(W0000000c:29.97:108000:"reel:1")", "W0000000c:25:-5000000000:"}));
}

// Deliberate: offset first, and the status is the one that the operation before left.
TEST_F(WriterController, AddsAnAudioFileWithTheStatusOfTheOperationBefore) {
    recording.answer("W00000000", "-43");
    recording.answer("W00000003", "-54");
    sut->openFile("a.mov", 1);
    sent();

    EXPECT_EQ(sut->addAudioFile("a:b.wav", 1.5f), -43);

    EXPECT_EQ(sent(), Texts{R"(W00000003:1.5:"a:b.wav")"});
}

TEST_F(WriterController, SendsAnEmptyPathAsAnEmptyArgument) {
    sut->addAudioFile("", 1.5f);

    EXPECT_EQ(sent(), Texts{"W00000003:1.5:"});
}

TEST_F(WriterController, Configures) {
    recording.answer("W00000005", "profile=hq");

    sut->configure(1920, 1080, 10, 3, true, "profile=hq:range=full", 23.976f);

    EXPECT_EQ(sent(), Texts{"W00000005:1920:1080:23.976:10:3:1"});
    EXPECT_EQ(lastText(), "profile=hq:range=full");
}

// Deliberate: the three operations keep their answer in one place, and nothing but a new answer changes it.
TEST_F(WriterController, KeepsOneTextForConfigureEditSettingsAndTextOperation7) {
    recording.answer("W00000008", "edited");
    recording.answer("W00000007", "defaults");

    EXPECT_EQ(sut->editSettings("old"), "edited");
    EXPECT_EQ(lastText(), "old");
    EXPECT_EQ(sut->textOperation7("x"), "defaults");
    EXPECT_EQ(lastText(), "x");

    EXPECT_EQ(sent(), (Texts{"W00000008", "W00000007"}));
}

TEST_F(WriterController, ReadsTheAnswersOfTheOtherTextOperations) {
    recording.answer("W00000006", "six");
    recording.answer("W00000015", "I:a:1");
    recording.answer("W00000016", "twenty\ntwo");

    EXPECT_EQ(sut->textOperation6("in 6"), "six");
    EXPECT_EQ(lastText(), "in 6");
    EXPECT_EQ(sut->textOperation21(""), "I:a:1");
    EXPECT_EQ(lastText(), "");
    EXPECT_EQ(sut->textOperation22("in 22"), "twenty\ntwo");
    EXPECT_EQ(lastText(), "in 22");

    EXPECT_EQ(sent(), (Texts{"W00000006", "W00000015", "W00000016"}));
}

TEST_F(WriterController, AnswersNoTextWhereTheWorkerGivesNone) {
    recording.answerBytes("W00000006", "");

    EXPECT_EQ(sut->textOperation6(""), "");
}

TEST_F(WriterController, SendsProperties) {
    Morvane::Property::PropertyList properties;
    Morvane::Property::readPropertyList("S:title:x:I:year:1999", properties);
    recording.answer("W0000000b", "-50");

    EXPECT_EQ(sut->setProperties(properties), 0);

    EXPECT_EQ(sent(), Texts{"W0000000b"});
    EXPECT_EQ(lastText(), "S:title:x:I:year:1999");
}

TEST_F(WriterController, SetsCodecAndAspect) {
    sut->setCodec(12);
    sut->setUseFormatAspect(true);
    sut->setUseFormatAspect(false);

    EXPECT_EQ(sent(), (Texts{"W00000009:12", "W0000000d:1", "W0000000d:0"}));
}

TEST_F(WriterController, ReadsNumbersBack) {
    recording.answer("W0000000a", "7");
    recording.answer("W00000010", " 5 ");
    recording.answer("W0000000f", "23.976");
    recording.answer("W00000011", "12frames");

    EXPECT_EQ(sut->getCodec(), 7);
    EXPECT_EQ(sut->getQuality(), 5);
    EXPECT_EQ(sut->getFrameRate(), 23.976f);
    EXPECT_EQ(sut->getKeyFrameRate(), 12);

    EXPECT_EQ(sent(), (Texts{"W0000000a", "W00000010", "W0000000f", "W00000011"}));
}

TEST_F(WriterController, KeepsNumbersThatCannotBeReadAgain) {
    for (const char* head : {"W0000000a", "W00000010", "W0000000f", "W00000011"}) {
        recording.answer(head, "12.5", 1);
        recording.answer(head, "not a number", 2);
        recording.answer(head, "", 3);
    }

    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(sut->getCodec(), 12);
        EXPECT_EQ(sut->getQuality(), 12);
        EXPECT_EQ(sut->getFrameRate(), 12.5f);
        EXPECT_EQ(sut->getKeyFrameRate(), 12);
    }
}

TEST_F(WriterController, HasDefinedNumbersBeforeTheWorkerGivesAny) {
    for (const char* head : {"W00000000", "W0000000a", "W00000010", "W0000000f", "W00000011"}) {
        recording.answer(head, "");
    }

    EXPECT_EQ(sut->openFile("a.mov", 1), 0);
    EXPECT_EQ(sut->getCodec(), 0);
    EXPECT_EQ(sut->getQuality(), 0);
    EXPECT_EQ(sut->getFrameRate(), 0.0f);
    EXPECT_EQ(sut->getKeyFrameRate(), 0);
}

TEST_F(WriterController, CanBeDeletedThroughItsInterface) {
    sut->finishVideo();

    const QuickTimeCodecWriterInterface* interface = sut.release();
    delete interface;

    EXPECT_EQ(recording.leftovers(), Texts{});
}

// Deliberate: the status that an exchange leaves when it could not take place is the one before it.
TEST_F(WriterController, AnswersTheOldStatusWhenNothingCouldBeSent) {
    setenv("CORVEL_TEMP_DIR", "/no/such/folder", 1);
    const std::unique_ptr<QuickTimeCodecWriterIPCController> other(createWriterController());
    testing::internal::CaptureStderr();

    EXPECT_EQ(other->openFile("a.mov", 1), 0);

    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(sent(), Texts{});
}

Texts entriesOf(const char* const* list) {
    Texts entries;
    for (; *list != nullptr; ++list) {
        entries.push_back(*list);
    }
    return entries;
}

void askTwoControllersForTheCodecList() {
    const Recording recording;
    recording.answer("W0000000e", "jpeg\tPhoto-JPEG:\"rle \ta:b\":mjpa\tMotion JPEG A");
    const std::unique_ptr<QuickTimeCodecWriterIPCController> first(createWriterController());
    const char* const* const list = first->codecList();

    EXPECT_EQ(entriesOf(list), (Texts{"jpeg\tPhoto-JPEG", "rle \ta:b", "mjpa\tMotion JPEG A"}));
    EXPECT_EQ(first->codecList(), list);
    const std::unique_ptr<QuickTimeCodecWriterIPCController> second(createWriterController());
    EXPECT_EQ(second->codecList(), list);
    EXPECT_EQ(recording.requests(), Texts{"W0000000e"});
}

TEST(WriterCodecListDeathTest, IsAskedForOnceAProcess) {
    IN_FRESH_PROCESS(askTwoControllersForTheCodecList);
}

void answerNoCodecs() {
    const Recording recording;
    recording.answer("W0000000e", "");
    const std::unique_ptr<QuickTimeCodecWriterIPCController> sut(createWriterController());

    EXPECT_EQ(entriesOf(sut->codecList()), Texts{});
    EXPECT_EQ(entriesOf(sut->codecList()), Texts{});
    EXPECT_EQ(recording.requests(), Texts{"W0000000e"});
}

TEST(WriterCodecListDeathTest, StaysEmptyWhenTheWorkerHasNone) {
    IN_FRESH_PROCESS(answerNoCodecs);
}

void answerBrokenCodecs() {
    const Recording recording;
    recording.answer("W0000000e", "jpeg\tPhoto-JPEG:\\q", 1);
    recording.answer("W0000000e", "jpeg\tPhoto-JPEG", 2);
    const std::unique_ptr<QuickTimeCodecWriterIPCController> sut(createWriterController());

    EXPECT_THROW(sut->codecList(), boost::escaped_list_error);
    EXPECT_EQ(entriesOf(sut->codecList()), Texts{"jpeg\tPhoto-JPEG"});
}

TEST(WriterCodecListDeathTest, IsAskedForAgainAfterAMalformedAnswer) {
    IN_FRESH_PROCESS(answerBrokenCodecs);
}

void askWithoutSharedFiles() {
    const Recording recording;
    setenv("CORVEL_TEMP_DIR", "/no/such/folder", 1);
    const std::unique_ptr<QuickTimeCodecWriterIPCController> sut(createWriterController());

    EXPECT_EQ(entriesOf(sut->codecList()), Texts{});
}

TEST(WriterCodecListDeathTest, IsAListWithoutEntriesWhenNothingCouldBeSent) {
    IN_FRESH_PROCESS(askWithoutSharedFiles);
}

}  // namespace
