#include "host/app/KnobOptions.h"

#include <gtest/gtest.h>

#include "host/render/Failure.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

// What the options mean, as "knob=text".
std::vector<std::string> parsed(const std::string& options) {
    CLI::App app;
    std::vector<KnobSetting> settings;
    declareKnobOptions(app, settings);
    app.parse(options);
    std::vector<std::string> texts;
    for (const KnobSetting& setting : settings) {
        texts.push_back(setting.knob + "=" + setting.text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(KnobOptions, HaveTheSavedNames) {
    EXPECT_EQ(parsed("--codec apch"), Texts{"codec=apch"});
    EXPECT_EQ(parsed("--quality max"), Texts{"quality=max"});
    EXPECT_EQ(parsed("--keyframerate 5"), Texts{"keyframerate=5"});
    EXPECT_EQ(parsed("--audiofile a.wav"), Texts{"audiofile=a.wav"});
    EXPECT_EQ(parsed("--audio_offset -0.25"), Texts{"audio_offset=-0.25"});
    EXPECT_EQ(parsed("--units frames"), Texts{"units=frames"});
    EXPECT_EQ(parsed("--settings a=b"), Texts{"settings=a=b"});
}

TEST(KnobOptions, HaveFriendlierNames) {
    EXPECT_EQ(parsed("--audio a.wav"), Texts{"audiofile=a.wav"});
    EXPECT_EQ(parsed("--audio-offset 2"), Texts{"audio_offset=2"});
    EXPECT_EQ(parsed("--frame-rate 25"), Texts{"fps=25"});
    EXPECT_EQ(parsed("--fast-start"), Texts{"Flatten=on"});
}

TEST(KnobOptions, TurnSwitchesOnAndOff) {
    EXPECT_EQ(parsed("--Flatten"), Texts{"Flatten=on"});
    EXPECT_EQ(parsed("--no-Flatten"), Texts{"Flatten=off"});
    EXPECT_EQ(parsed("--no-fast-start"), Texts{"Flatten=off"});
    EXPECT_EQ(parsed("--use_format_aspect"), Texts{"use_format_aspect=on"});
    EXPECT_EQ(parsed("--no-use_format_aspect"), Texts{"use_format_aspect=off"});
    EXPECT_EQ(parsed("--writeTimeCode"), Texts{"writeTimeCode=on"});
    EXPECT_EQ(parsed("--no-writeTimeCode"), Texts{"writeTimeCode=off"});
}

TEST(KnobOptions, TakeRatesAsNumbersOrFractions) {
    EXPECT_EQ(parsed("--fps 23.976"), Texts{"fps=23.976"});
    EXPECT_EQ(parsed("--fps 30000/1001"), Texts{"fps=29.97003"});
    EXPECT_EQ(parsed("--fps 25/2"), Texts{"fps=12.5"});
}

TEST(KnobOptions, RefuseRatesThatAreNone) {
    for (const char* rate : {"0", "-1", "nan", "inf", "1/0", "0/0", "fast", "24/", "/2", "24fps"}) {
        EXPECT_THROW(parsed(std::string("--fps=") + rate), CLI::ValidationError) << rate;
    }
}

TEST(KnobOptions, ReachAnyKnob) {
    EXPECT_EQ(parsed("--knob a=b=c --knob d="), (Texts{"a=b=c", "d="}));
    EXPECT_THROW(parsed("--knob a"), CLI::ValidationError);
}

TEST(KnobFiles, MustBeThere) {
    const TemporaryFolder folder;
    folder.write("a.wav");
    EXPECT_NO_THROW(checkKnobFiles({{"audiofile", folder / "a.wav"}, {"codec", "/nowhere"}}));
    EXPECT_THROW(checkKnobFiles({{"audiofile", folder / "b.wav"}}), Failure);
    EXPECT_THROW(checkKnobFiles({{"audiofile", folder.path()}}), Failure);
}

}  // namespace
}  // namespace Corvel
