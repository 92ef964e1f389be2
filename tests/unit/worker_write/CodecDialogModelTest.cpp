#include "worker/write/CodecDialogModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;

class CodecDialogModelTest : public testing::Test {
protected:
    std::int32_t indexOf(const std::string& name) const {
        const auto names = sut.codecs();
        return static_cast<std::int32_t>(std::find(names.begin(), names.end(), name) - names.begin());
    }
    DialogState stateOf(const std::string& codec, const std::string& settings = "") const {
        DialogState state;
        state.codec = indexOf(codec);
        state.settings = settings;
        return state;
    }
    std::vector<std::string> keysOf(const std::string& codec) const {
        std::vector<std::string> keys;
        for (const DialogControl& control : sut.codec(indexOf(codec)).controls)
            keys.push_back(control.key);
        return keys;
    }
    DialogControl controlOf(const std::string& codec, const std::string& key) const {
        for (const DialogControl& control : sut.codec(indexOf(codec)).controls)
            if (control.key == key)
                return control;
        ADD_FAILURE() << "no control for " << key;
        return {};
    }

    std::atomic<bool> ending{false};
    CodecDialogModel sut{{640, 360, 1, 4, true, 25}, false, ending};
};

TEST_F(CodecDialogModelTest, ShowsOnlyWhatACodecHasAndWhatCanBeChanged) {
    using testing::ElementsAre;
    EXPECT_THAT(keysOf("Animation"),
                ElementsAre("alpha", "primaries", "transfer", "matrix", "aspect", "threads"));
    EXPECT_THAT(keysOf("Photo-JPEG"),
                ElementsAre("primaries", "transfer", "aspect", "threads", "chroma", "huffman", "quantiser"))
        << "one matrix, one range, no fields, no alpha";
}

TEST_F(CodecDialogModelTest, KnowsRangesDefaultsAndWhatTheEncoderSays) {
    const DialogControl sut = controlOf("H.264", "crf");
    EXPECT_EQ(sut.kind, DialogControl::Kind::Number);
    EXPECT_EQ(sut.lowest, 0);
    EXPECT_EQ(sut.highest, 51);
    EXPECT_TRUE(sut.automatic);
    EXPECT_EQ(sut.defaultValue, "auto");
    EXPECT_THAT(sut.help, HasSubstr("libx264, crf:"));
    const DialogControl threads = controlOf("H.264", "threads");
    EXPECT_EQ(threads.lowest, 1);
    EXPECT_EQ(threads.highest, 256);
    EXPECT_TRUE(threads.automatic);
    const DialogControl chunks = controlOf("Hap", "chunks");
    EXPECT_FALSE(chunks.automatic);
}

TEST_F(CodecDialogModelTest, ChangesOneKeyAndLeavesTheRestOfTheTextAlone) {
    const DialogState state = stateOf("H.264", "colour=pq:meta.title=a\\:b:preset=fast");
    EXPECT_EQ(sut.withValue(state, "crf", "20"), "colour=pq:meta.title=a\\:b:preset=fast:crf=20");
    EXPECT_EQ(sut.withValue(state, "preset", "slow"), "colour=pq:meta.title=a\\:b:preset=slow");
}

TEST_F(CodecDialogModelTest, DropsTheCurveOfStraightAlphaWithIt) {
    const DialogState state = stateOf("ProRes 4444", "alpha=straight:curve=rec709:threads=2");
    const std::string changed = sut.withValue(state, "alpha", "none");
    EXPECT_EQ(changed, "alpha=none:threads=2");
    EXPECT_EQ(sut.check(stateOf("ProRes 4444", changed)).problem, "");
    EXPECT_EQ(sut.withValue(state, "alpha", "premultiplied"), "threads=2") << "which is the default";
    EXPECT_EQ(sut.withValue(state, "threads", "3"), "alpha=straight:curve=rec709:threads=3");
}

TEST_F(CodecDialogModelTest, LeavesOutWhatIsTheDefault) {
    EXPECT_EQ(sut.withValue(stateOf("H.264", "preset=fast"), "preset", "medium"), "");
    EXPECT_EQ(sut.withValue(stateOf("H.264", "colour=pq"), "transfer", "bt709"), "colour=pq:transfer=bt709")
        << "not the default beside that preset of colours";
}

TEST_F(CodecDialogModelTest, SaysWhyASettingDoesNotWork) {
    const DialogAnswer answer = sut.check(stateOf("H.264", "profile=baseline:bitdepth=10"));
    EXPECT_THAT(answer.problem, HasSubstr("H.264 has no picture with profile=baseline bitdepth=10"));
    EXPECT_TRUE(answer.values.empty());
    EXPECT_NE(sut.check(stateOf("DV - PAL")).problem, "") << "not of that size";
}

TEST_F(CodecDialogModelTest, SaysInPlainWordsWhatWillBeMade) {
    const DialogAnswer answer = sut.check(stateOf("ProRes 4444"));
    EXPECT_EQ(answer.problem, "");
    EXPECT_EQ(answer.values.at("profile"), "4444");
    EXPECT_THAT(answer.summary,
                HasSubstr("ProRes 4444: YCbCr 4:4:4, 10 bits a channel, premultiplied alpha."));
    EXPECT_THAT(answer.summary,
                HasSubstr("640 × 360 pixels at 24 frames a second. Every frame stands alone."));
}

TEST_F(CodecDialogModelTest, KnowsTheSizeOfWhatIsNotCompressed) {
    const double frames = 24 * 60;
    const auto bytes = sut.bytesPerMinute(stateOf("None"));
    ASSERT_TRUE(bytes);
    EXPECT_NEAR(*bytes, 640.0 * 360 * 4 * frames, 1);
}

TEST_F(CodecDialogModelTest, FindsBetterQualityLarger) {
    DialogState state = stateOf("H.264");
    state.keyFrameRate = 24;
    state.quality = 1;
    const auto low = sut.bytesPerMinute(state);
    state.quality = 4;
    const auto high = sut.bytesPerMinute(state);
    ASSERT_TRUE(low && high);
    EXPECT_GT(*high, 2 * *low);
}

TEST_F(CodecDialogModelTest, HasNoSizeForWhatDoesNotWork) {
    EXPECT_FALSE(sut.bytesPerMinute(stateOf("DV - PAL")));
}

TEST_F(CodecDialogModelTest, MeasuresEveryCodecThatTakesTheSize) {
    for (std::size_t index = 0; index < sut.codecs().size(); ++index) {
        DialogState state;
        state.codec = static_cast<std::int32_t>(index);
        const bool works = sut.check(state).problem.empty();
        EXPECT_EQ(sut.bytesPerMinute(state).has_value(), works) << sut.codecs()[index];
    }
}

}  // namespace
}  // namespace Morvane::Worker
