#include "host/render/NodeSettings.h"

#include <gtest/gtest.h>

#include "Kex/Image/LUT.h"
#include "host/render/Failure.h"
#include "host/render/KnobValue.h"
#include "host/render/Log.h"
#include "tests/unit/host/FakeNode.h"

namespace Corvel {
namespace {

class NodeSettingsTest : public testing::Test, private Reporter {
protected:
    NodeSettingsTest() { logTo(this); }
    ~NodeSettingsTest() override { logTo(nullptr); }

    void apply() { applySettings(fake.node, fake.picture, request, plan); }

    std::string settingsAfter() {
        apply();
        return fake.writer().settings;
    }

    std::string reelAndTimecode() {
        const auto bundle = fake.picture.fetchMetaData("");
        const auto* timecode = bundle.getData("input/timecode");
        const auto* reel = bundle.getData("quicktime/reel");
        return (timecode ? timecode->text() : "none") + " " + (reel ? reel->text() : "none");
    }

    FakeNode fake;
    RenderRequest request;
    RenderPlan plan;
    std::vector<std::string> messages;

private:
    void message(MessageLevel, const std::string& text) override { messages.push_back(text); }
    void helperLine(const std::string&) override {}
    void start(const RenderStart&) override {}
    void progress(const FrameProgress&, bool) override {}
    void end(const RenderEnd&) override {}
};

using Names = std::vector<std::string>;

TEST_F(NodeSettingsTest, ChangesNothingThatNobodyAskedFor) {
    apply();
    EXPECT_TRUE(fake.writer().told.empty());
}

TEST_F(NodeSettingsTest, SetsTheCodecFirstAndTheSettingsLast) {
    request.knobs = {{"settings", "a=1"}, {"fps", "25"}, {"codec", "apch"}};
    apply();
    EXPECT_EQ(fake.writer().told, (Names{"codec=apch\tProRes 422 HQ", "fps=25", "settings=a=1"}));
    EXPECT_EQ(fake.writer().settings, "a=1") << "the codec would have cleared them";
}

class FakeConversion : public ColourConversion {
public:
    explicit FakeConversion(DisplayTags wanted) : wantedTags(std::move(wanted)) {}
    std::shared_ptr<const ColourTransform> transform(Part) const override { return nullptr; }
    std::string inputText() const override { return ""; }
    std::string inputDoubt() const override { return ""; }
    std::string spaceOf(const PictureHeader&) const override { return ""; }
    std::string inputSpace() const override { return ""; }
    std::string outputText() const override { return ""; }
    std::string configText() const override { return ""; }
    DisplayTags tags() const override { return wantedTags; }

private:
    const DisplayTags wantedTags;
};

TEST_F(NodeSettingsTest, TagsTheMovieAsItsDisplay) {
    plan.lut = Kex::Image::LUT::getLut(0);
    plan.colour = std::make_shared<FakeConversion>(DisplayTags{"bt2020", "smpte2084", "bt2020nc"});
    EXPECT_EQ(settingsAfter(), "colour=bt2020:primaries=bt2020:transfer=smpte2084");
}

TEST_F(NodeSettingsTest, TagsTheMovieOnlyWhereThePersonDidNot) {
    plan.colour = std::make_shared<FakeConversion>(DisplayTags{"bt709", "bt709", "bt709"});
    request.knobs = {{"settings", "transfer=linear"}};
    EXPECT_EQ(settingsAfter(), "transfer=linear:primaries=bt709");
}

TEST_F(NodeSettingsTest, AddsNoTagToAColourThatIsGivenWhole) {
    plan.colour = std::make_shared<FakeConversion>(DisplayTags{"bt2020", "smpte2084", "bt2020nc"});
    request.knobs = {{"settings", "colour=srgb"}};
    EXPECT_EQ(settingsAfter(), "colour=srgb");
}

TEST_F(NodeSettingsTest, AddsNoTagThatHasNoName) {
    plan.lut = Kex::Image::LUT::getLut(0);
    plan.colour = std::make_shared<FakeConversion>(DisplayTags{"", "linear", ""});
    EXPECT_EQ(settingsAfter(), "transfer=linear");
}

TEST_F(NodeSettingsTest, PressesTheButtonWhenAllElseIsSet) {
    request.knobs = {{"settings", "a=1"}};
    request.advanced = true;
    request.threads = 2;
    EXPECT_EQ(settingsAfter(), "a=1:dialog=1:threads=2");
}

TEST_F(NodeSettingsTest, LeavesOutARateOfTheInputThatIsNone) {
    for (const char* rate : {"1e+06", "-25", "0", "nan"}) {
        plan.metadata["input/frame_rate"] = rate;
        messages.clear();
        apply();
        EXPECT_EQ(fake.writer().fps, 24.0f) << rate;
        ASSERT_EQ(messages.size(), 1U) << rate;
        EXPECT_NE(messages[0].find(rate), std::string::npos);
    }
}

TEST_F(NodeSettingsTest, TakesTheRateOfTheInputUnlessOneIsGiven) {
    plan.metadata["input/frame_rate"] = "23.976";
    apply();
    EXPECT_EQ(fake.writer().fps, 23.976f);
    request.knobs = {{"fps", "30"}};
    apply();
    EXPECT_EQ(fake.writer().fps, 30);
}

TEST_F(NodeSettingsTest, RefusesARateThatIsNone) {
    for (const char* rate : {"0", "-1", "1e9"}) {
        request.knobs = {{"fps", rate}};
        EXPECT_THROW(apply(), Failure) << rate;
    }
}

TEST_F(NodeSettingsTest, AddsTheAspectOnlyWhenTheFormatsIsToBeUsed) {
    plan.format = {720, 576, 16.0 / 15};
    EXPECT_EQ(settingsAfter(), "");
    request.knobs = {{"use_format_aspect", "on"}};
    EXPECT_EQ(settingsAfter(), "aspect=16/15");
}

TEST_F(NodeSettingsTest, AddsTheTransferOfAChosenCurve) {
    plan.lut = Kex::Image::LUT::find("linear");
    EXPECT_EQ(settingsAfter(), "transfer=linear");
}

TEST_F(NodeSettingsTest, AddsNoTransferForACurveWithoutAName) {
    plan.lut = Kex::Image::LUT::find("cineon");
    EXPECT_EQ(settingsAfter(), "");
}

TEST_F(NodeSettingsTest, NamesTheCurveWhereAlphaIsToBeStraight) {
    request.knobs = {{"settings", "alpha=straight"}};
    EXPECT_EQ(settingsAfter(), "alpha=straight:curve=linear") << "this writer has no curve of its own";
    fake.node.setLut(Kex::Image::LUT::find("cineon"));
    EXPECT_EQ(settingsAfter(), "alpha=straight:curve=cineon");
    request.knobs = {{"settings", "alpha=straight:curve=linear"}};
    EXPECT_EQ(settingsAfter(), "alpha=straight:curve=linear");
    request.knobs = {{"settings", "alpha=premultiplied"}};
    EXPECT_EQ(settingsAfter(), "alpha=premultiplied");
}

TEST_F(NodeSettingsTest, LeavesAColourAloneThatWasGiven) {
    plan.lut = Kex::Image::LUT::find("linear");
    request.knobs = {{"settings", "colour=pq"}};
    EXPECT_EQ(settingsAfter(), "colour=pq");
    request.knobs = {{"settings", "transfer=hlg"}};
    EXPECT_EQ(settingsAfter(), "transfer=hlg");
}

TEST_F(NodeSettingsTest, AddsMetadataButNotTheNodesOwnKeys) {
    request.metadata = {{"title", "a:b"}, {"input/note", "x"}};
    plan.metadata["input/note"] = "x";
    EXPECT_EQ(settingsAfter(), "meta.title=a\\:b");
    EXPECT_EQ(fake.picture.fetchMetaData("input/note").getData("input/note")->text(), "x");
}

TEST_F(NodeSettingsTest, WritesNoTimecodeUnlessAskedTo) {
    plan.metadata = {{"input/timecode", "01:00:00:00"}, {"quicktime/reel", "A"}};
    EXPECT_EQ(settingsAfter(), "");
    EXPECT_EQ(reelAndTimecode(), "01:00:00:00 A") << "the node decides what it does with it";
}

TEST_F(NodeSettingsTest, AddsTimecodeAndReelForAMovieThatIsCutOff) {
    plan.metadata = {{"input/timecode", "01:00:00:05"}, {"quicktime/reel", "A:1"}};
    request.knobs = {{"writeTimeCode", "on"}};
    EXPECT_EQ(settingsAfter(), "timecode=01\\:00\\:00\\:05:reel=A\\:1");
}

TEST_F(NodeSettingsTest, TurnsTheTrackOnForATimecodeThatIsGiven) {
    request.timecode = "02:00:00:00";
    plan.metadata = {{"input/timecode", "02:00:00:00"}};
    apply();
    EXPECT_TRUE(fake.writer().writeTimeCode);
    EXPECT_EQ(reelAndTimecode(), "02:00:00:00 none");
}

TEST_F(NodeSettingsTest, RefusesATimecodeBeyondTheRate) {
    request.timecode = "00:00:00:24";
    plan.metadata = {{"input/timecode", request.timecode}};
    EXPECT_THROW(apply(), Failure);
    request.knobs = {{"fps", "25"}};
    EXPECT_NO_THROW(apply());
}

TEST_F(NodeSettingsTest, LeavesOutATimecodeOfTheInputThatIsNone) {
    plan.metadata = {{"input/timecode", "00:00:00:99"}};
    request.knobs = {{"writeTimeCode", "on"}};
    EXPECT_EQ(settingsAfter(), "");
    EXPECT_EQ(reelAndTimecode(), "none none");
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("00:00:00:99"), std::string::npos);
}

TEST_F(NodeSettingsTest, WarnsOfDropFrameAtARateThatHasIt) {
    request.timecode = "01:00:00;00";
    plan.metadata = {{"input/timecode", request.timecode}};
    request.knobs = {{"fps", "29.97"}};
    EXPECT_EQ(settingsAfter(), "timecode=01\\:00\\:00\\:00");
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("non-drop"), std::string::npos);
}

TEST_F(NodeSettingsTest, SaysNothingOfDropFrameAtOtherRates) {
    request.timecode = "01:00:00;00";
    plan.metadata = {{"input/timecode", request.timecode}};
    request.knobs = {{"fps", "25"}};
    apply();
    EXPECT_TRUE(messages.empty());
}

TEST_F(NodeSettingsTest, CountsBackWhereTheFirstFramesAreMissing) {
    plan.metadata = {{"input/timecode", "01:00:00:01"}};
    plan.timecodeLead = 2;
    request.knobs = {{"writeTimeCode", "on"}};
    apply();
    EXPECT_EQ(reelAndTimecode(), "00:59:59:23 none");
}

TEST(AspectFraction, FindsSmallNumbers) {
    EXPECT_EQ(aspectFraction(1), "1/1");
    EXPECT_EQ(aspectFraction(2), "2/1");
    EXPECT_EQ(aspectFraction(0.5), "1/2");
    EXPECT_EQ(aspectFraction(16.0f / 15), "16/15");
    EXPECT_EQ(aspectFraction(10.0f / 11), "10/11");
    EXPECT_EQ(aspectFraction(40.0f / 33), "40/33");
    EXPECT_EQ(aspectFraction(1.0925), "437/400");
}

}  // namespace
}  // namespace Corvel
