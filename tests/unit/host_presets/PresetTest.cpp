#include "host/presets/Preset.h"

#include <gtest/gtest.h>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

std::string shown(const std::vector<KnobSetting>& settings) {
    std::string text;
    for (const KnobSetting& setting : settings) {
        text += setting.knob + "=" + setting.text + " ";
    }
    return text;
}

TEST(PresetTest, KeepsTheOrderAndTheValuesOfItsFile) {
    const Preset sut = readPreset(
        R"({"description": "d", "knobs": {"z": "text", "a": 25, "b": 23.976, "c": true, "d": false}})", "f");
    EXPECT_EQ(sut.description, "d");
    EXPECT_EQ(shown(sut.knobs), "z=text a=25 b=23.976 c=on d=off ");
}

TEST(PresetTest, IsReadBackAsItWasWritten) {
    Preset sut;
    sut.description = "a \"line\"";
    sut.knobs = {{"codec", "png "}, {"settings", "meta.title=a\\:b"}, {"audiofile", "Tür.wav"}};
    const Preset again = readPreset(presetJson(sut), "f");
    EXPECT_EQ(again.description, sut.description);
    EXPECT_EQ(shown(again.knobs), shown(sut.knobs));
}

TEST(PresetTest, RefusesADocumentThatIsNone) {
    for (const char* text :
         {"", "{", "[]", "{}", R"({"knobs": []})", R"({"knobs": {"a": null}})", R"({"knobs": {"a": [1]}})"}) {
        EXPECT_THROW(readPreset(text, "f"), Failure) << text;
    }
}

TEST(PresetTest, APersonsOwnValuesCountMore) {
    const Preset sut{.name = "p", .description = "", .knobs = {{"quality", "High"}, {"fps", "25"}}};
    EXPECT_EQ(shown(onTopOf(sut, {{"fps", "30"}, {"units", "Frames"}})), "quality=High fps=30 units=Frames ");
}

TEST(PresetTest, SettingsGoWithTheCodecThatTheyWereMadeFor) {
    const Preset sut{.name = "p", .description = "", .knobs = {{"codec", "avc1"}, {"settings", "crf=20"}}};
    EXPECT_EQ(shown(onTopOf(sut, {{"codec", "apch"}})), "codec=apch ");
    EXPECT_EQ(shown(onTopOf(sut, {{"fps", "30"}})), "codec=avc1 settings=crf=20 fps=30 ");
}

}  // namespace
}  // namespace Corvel
