#include "tests/integration/recorded_render/HostFixture.h"

namespace Morvane {
namespace {

using Requests = std::vector<std::string>;

class RecordedKnobs : public Testing::HostFixture {};

TEST_F(RecordedKnobs, OfferTheWorkersCodecsAndMotionJpegAmongThem) {
    make();

    EXPECT_EQ(node->knob("codec")->entries(),
              (std::vector<std::string>{"rle \tAnimation", "png \tPNG", "mjpa\tMotion JPEG A"}));
    EXPECT_EQ(node->knob("codec")->get_value(), 2);
    EXPECT_EQ(node->knobs().size(), 12U);
}

TEST_F(RecordedKnobs, SendAnEmptySettingsTextWithANewCodec) {
    make();
    node->knob("settings")->set_text("profile=3");

    EXPECT_TRUE(change("codec", 1));

    EXPECT_EQ(newRequests(), (Requests{"W00000009:1", "W00000005:2:2:24:1:4:0"}));
    EXPECT_EQ(recording.payloadText(seen - 1), "");
    EXPECT_EQ(node->knob("settings")->get_text(), "");
}

TEST_F(RecordedKnobs, TakeOverWhatTheSettingsDialogAnswers) {
    recording.answer("W00000008", "profile=4444");
    recording.answer("W00000011", "12");
    recording.answer("W0000000f", "29.97");
    recording.answer("W00000010", "5");
    recording.answer("W0000000a", "1");
    make();
    node->knob("settings")->set_text("profile=hq");

    EXPECT_TRUE(node->knobChanged(*node->knob("advanced")));

    const std::size_t before = seen;
    EXPECT_EQ(newRequests(), (Requests{"W00000009:2", "W00000005:2:2:24:1:4:0", "W00000008", "W00000011",
                                       "W0000000f", "W00000010", "W0000000a"}));
    EXPECT_EQ(recording.payloadText(before + 2), "profile=hq");
    EXPECT_EQ(node->knob("settings")->get_text(), "profile=4444");
    EXPECT_EQ(node->knob("keyframerate")->get_value(), 12);
    EXPECT_EQ(node->knob("fps")->get_value(), 29.97F);
    EXPECT_EQ(node->knob("quality")->get_value(), 5);
    EXPECT_EQ(node->knob("codec")->get_value(), 1);
}

TEST_F(RecordedKnobs, OfTheEndOfTheMovieSendNothing) {
    make();

    EXPECT_FALSE(change("audio_offset", 4));
    EXPECT_FALSE(change("writeTimeCode", 1));

    EXPECT_TRUE(newRequests().empty());
}

TEST_F(RecordedKnobs, SendTheAspectSwitchAndTheFrameRate) {
    make();

    EXPECT_TRUE(change("use_format_aspect", 1));
    EXPECT_TRUE(change("fps", 23.976));

    EXPECT_EQ(newRequests(), (Requests{"W0000000d:1", "W00000005:2:2:23.976:1:4:0"}));
}

TEST_F(RecordedKnobs, StartTheWorkerWithBridgeNameAndModeWord) {
    make();

    const std::vector<std::string> arguments = recording.arguments();
    ASSERT_EQ(arguments.size(), 3U);
    EXPECT_EQ(arguments[0], "/CorvelQuickTimeHelper-32");
    EXPECT_EQ(arguments[1].size(), 32U);
    EXPECT_EQ(arguments[1].find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(arguments[2], "write");
}

}  // namespace
}  // namespace Morvane
