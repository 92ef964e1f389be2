#include "quicktime/QuickTimeCodecTask.h"

#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>
#include <limits>
#include <memory>

#include "property/RequestText.h"

namespace {

using Morvane::Property::requestText;
using Morvane::QuickTime::QuickTimeCodecReadTask;
using Morvane::QuickTime::QuickTimeCodecTask;
using Morvane::QuickTime::QuickTimeCodecWriteTask;

template <typename Task>
std::string errorOf(const std::string& text) {
    try {
        Task{text};
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(QuickTimeCodecReadTask, HoldsTheFrameOfReadFrame) {
    const QuickTimeCodecReadTask sut("R00000000:7");

    EXPECT_EQ(sut.opcode, 0);
    EXPECT_EQ(sut.frame, 7);
    EXPECT_EQ(sut.fileName, "");
    EXPECT_EQ(sut.mode, 0);
}

TEST(QuickTimeCodecReadTask, HoldsPathAndModeOfOpenFile) {
    const QuickTimeCodecReadTask sut("R00000001:/tmp/a.mov:1");

    EXPECT_EQ(sut.opcode, 1);
    EXPECT_EQ(sut.fileName, "/tmp/a.mov");
    EXPECT_EQ(sut.mode, 1);
}

TEST(QuickTimeCodecReadTask, HoldsOnlyTheOpcodeOfOtherRequests) {
    for (const std::int32_t opcode : {2, 3, 4, 5, 99}) {
        EXPECT_EQ(QuickTimeCodecReadTask(requestText('R', opcode)).opcode, opcode);
    }
}

TEST(QuickTimeCodecWriteTask, HoldsPathAndModeOfOpenFile) {
    const QuickTimeCodecWriteTask sut(R"(W00000000:"C:\\a \"b\".mov":1)");

    EXPECT_EQ(sut.opcode, 0);
    EXPECT_EQ(sut.fileName, R"(C:\a "b".mov)");
    EXPECT_EQ(sut.mode, 1);
}

TEST(QuickTimeCodecWriteTask, HoldsFrameAndFlagOfAddFrame) {
    const QuickTimeCodecWriteTask sut("W00000001:12:1");

    EXPECT_EQ(sut.opcode, 1);
    EXPECT_EQ(sut.frame, 12);
    EXPECT_TRUE(sut.frameFlag);
}

// Deliberate: the offset comes before the path.
TEST(QuickTimeCodecWriteTask, HoldsOffsetAndPathOfAddAudioFile) {
    const QuickTimeCodecWriteTask sut(R"(W00000003:-2.5:"C:/x.wav")");

    EXPECT_EQ(sut.audioOffset, -2.5f);
    EXPECT_EQ(sut.audioFileName, "C:/x.wav");
    EXPECT_EQ(sut.fileName, "");
}

TEST(QuickTimeCodecWriteTask, HoldsTheFlagOfCloseFile) {
    EXPECT_TRUE(QuickTimeCodecWriteTask("W00000004:1").flatten);
    EXPECT_FALSE(QuickTimeCodecWriteTask("W00000004:0").flatten);
}

TEST(QuickTimeCodecWriteTask, HoldsTheSixArgumentsOfConfigure) {
    const QuickTimeCodecWriteTask sut("W00000005:1920:1080:25:10:3:1");

    EXPECT_EQ(sut.width, 1920);
    EXPECT_EQ(sut.height, 1080);
    EXPECT_EQ(sut.framesPerSecond, 25.0f);
    EXPECT_EQ(sut.keyFrameRate, 10);
    EXPECT_EQ(sut.quality, 3);
    EXPECT_TRUE(sut.hasAlpha);
}

TEST(QuickTimeCodecWriteTask, HoldsTheIndexOfSetCodec) {
    EXPECT_EQ(QuickTimeCodecWriteTask("W00000009:4").codec, 4);
}

TEST(QuickTimeCodecWriteTask, HoldsRateStartAndReelOfAddTimecodeTrack) {
    const QuickTimeCodecWriteTask sut("W0000000c:29.97:108000:reel1");

    EXPECT_EQ(sut.timecodeRate.frameRateCode, 0x80000000u | 30u);
    EXPECT_EQ(sut.timecodeStartFrame, 108000);
    EXPECT_EQ(sut.reelName, "reel1");
}

TEST(QuickTimeCodecWriteTask, HoldsPositionAndCountOfAddSamples) {
    const QuickTimeCodecWriteTask sut("W00000012:-5000000000:48000");

    EXPECT_EQ(sut.samplePosition, -5000000000);
    EXPECT_EQ(sut.sampleCount, 48000);
}

TEST(QuickTimeCodecWriteTask, HoldsTheThreeArgumentsOfSetSampleFormat) {
    const QuickTimeCodecWriteTask sut("W00000014:2:1:4000000000");

    EXPECT_EQ(sut.sampleFormatA, 2);
    EXPECT_TRUE(sut.sampleFormatB);
    EXPECT_EQ(sut.sampleFormatC, 4000000000u);
}

// Deliberate: the argument of setUseFormatAspect is not in the record.
TEST(QuickTimeCodecWriteTask, HoldsOnlyTheOpcodeOfSetUseFormatAspect) {
    const QuickTimeCodecWriteTask sut("W0000000d:1");

    EXPECT_EQ(sut.opcode, 13);
    EXPECT_FALSE(sut.flatten || sut.frameFlag || sut.hasAlpha || sut.sampleFormatB);
}

TEST(QuickTimeCodecWriteTask, HoldsOnlyTheOpcodeOfOtherRequests) {
    for (const std::int32_t opcode : {2, 6, 7, 8, 10, 11, 14, 15, 16, 17, 19, 21, 22, 23, 1000}) {
        EXPECT_EQ(QuickTimeCodecWriteTask(requestText('W', opcode)).opcode, opcode);
    }
}

TEST(QuickTimeCodecWriteTask, ZeroesWhatItsOpcodeDoesNotFill) {
    const QuickTimeCodecWriteTask sut("W00000002");

    EXPECT_EQ(sut.frame | sut.mode | sut.codec | sut.width | sut.height | sut.quality | sut.keyFrameRate |
                  sut.sampleFormatA,
              0);
    EXPECT_EQ(sut.audioOffset + sut.framesPerSecond, 0.0f);
    EXPECT_EQ(sut.sampleFormatC, 0u);
    EXPECT_EQ(sut.samplePosition | sut.sampleCount | sut.timecodeStartFrame, 0);
    EXPECT_EQ(sut.timecodeRate.frameRateCode, 0u);
    EXPECT_EQ(sut.fileName + sut.audioFileName + sut.reelName, "");
}

TEST(QuickTimeCodecTask, IsMinusOneWithoutAReadableOpcode) {
    EXPECT_EQ(QuickTimeCodecWriteTask("W").opcode, -1);
}

TEST(QuickTimeCodecTask, LeavesUnreadableNumbersAtZeroAndClampsLargeOnes) {
    const QuickTimeCodecWriteTask sut("W00000005:wide:99999999999:fast:-99999999999:3x:7");

    EXPECT_EQ(sut.width, 0);
    EXPECT_EQ(sut.height, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(sut.framesPerSecond, 0.0f);
    EXPECT_EQ(sut.keyFrameRate, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(sut.quality, 3);
    EXPECT_TRUE(sut.hasAlpha);
}

TEST(QuickTimeCodecTask, IgnoresMoreArgumentsThanItsOpcodeHas) {
    EXPECT_EQ(QuickTimeCodecReadTask("R00000000:7:8:9").frame, 7);
}

TEST(QuickTimeCodecTask, IsRefusedForATextOfAnotherKind) {
    for (const char* text : {"", "X00000001", "R00000000:7", "w00000001:1:1"}) {
        EXPECT_EQ(errorOf<QuickTimeCodecWriteTask>(text), "Not a write task.") << text;
    }
    for (const char* text : {"", "X00000001", "W00000001:1:1", "r00000000:7"}) {
        EXPECT_EQ(errorOf<QuickTimeCodecReadTask>(text), "Not a read task.") << text;
    }
}

TEST(QuickTimeCodecTask, IsRefusedForAMalformedEscape) {
    EXPECT_THROW(QuickTimeCodecReadTask(R"(R00000001:a\q:1)"), boost::escaped_list_error);
    EXPECT_THROW(QuickTimeCodecWriteTask(R"(W00000002\)"), boost::escaped_list_error);
}

TEST(QuickTimeCodecTask, IsRefusedWhenArgumentsAreMissing) {
    EXPECT_EQ(errorOf<QuickTimeCodecReadTask>("R00000000"),
              "Request R00000000 has no argument 1, readFrame: frame.");
    EXPECT_EQ(errorOf<QuickTimeCodecReadTask>("R00000001:/a.mov"),
              "Request R00000001 has no argument 2, openFile: mode.");
    EXPECT_EQ(errorOf<QuickTimeCodecWriteTask>("W00000005:1:2:3:4:5"),
              "Request W00000005 has no argument 6, configure: alpha.");
}

TEST(QuickTimeCodecTask, NeedsEveryArgumentOfItsOpcode) {
    for (const char* text :
         {"W00000000:a:1", "W00000001:1:0", "W00000003:1:a", "W00000004:1", "W00000005:1:2:3:4:5:1",
          "W00000009:1", "W0000000c:25:1:a", "W00000012:1:2", "W00000014:1:0:2"}) {
        std::string cut = text;
        EXPECT_EQ(errorOf<QuickTimeCodecWriteTask>(cut), "no error");
        while (cut.find(':') != std::string::npos) {
            cut.erase(cut.rfind(':'));
            EXPECT_EQ(errorOf<QuickTimeCodecWriteTask>(cut).substr(0, 18),
                      "Request " + cut.substr(0, 9) + " ")
                << cut;
        }
    }
}

TEST(QuickTimeCodecTask, CanBeDestroyedAsItsBase) {
    const std::unique_ptr<QuickTimeCodecTask> sut =
        std::make_unique<QuickTimeCodecWriteTask>("W0000000c:25:1:reel");

    EXPECT_EQ(sut->opcode, 12);
}

}  // namespace
