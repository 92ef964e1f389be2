#include "host/render/KnobValue.h"

#include <gtest/gtest.h>

#include "tests/unit/host/FakeNode.h"

namespace Corvel {
namespace {

class KnobValueTest : public testing::Test {
protected:
    std::string refusal(const std::string& knob, const std::string& text) {
        try {
            applyKnob(fake.node, knob, text);
        } catch (const BadKnobValue& error) {
            EXPECT_TRUE(fake.writer().told.empty()) << "a refused value changes nothing";
            return error.what();
        }
        return "";
    }

    int codecFor(const std::string& text) {
        applyKnob(fake.node, "codec", text);
        return fake.writer().codec;
    }

    FakeNode fake;
};

TEST_F(KnobValueTest, TellsTheNodeOfTheChangeOnceTheValueIsSet) {
    applyKnob(fake.node, "fps", "25");
    EXPECT_EQ(fake.writer().told, std::vector<std::string>{"fps=25"});
}

TEST_F(KnobValueTest, FindsAnEntryByIndexTypeNameOrBeginning) {
    EXPECT_EQ(codecFor("0"), 0);
    EXPECT_EQ(codecFor("apch"), 2);
    EXPECT_EQ(codecFor("APCN"), 3);
    EXPECT_EQ(codecFor("rle"), 0) << "types are filled up with blanks";
    EXPECT_EQ(codecFor("rle "), 0);
    EXPECT_EQ(codecFor("motion jpeg a"), 1);
    EXPECT_EQ(codecFor("anim"), 0);
}

TEST_F(KnobValueTest, PrefersAnEntryToTheBeginningOfAnother) {
    EXPECT_EQ(codecFor("ProRes 422"), 3);
}

TEST_F(KnobValueTest, TakesANameThatBeginsWithADigit) {
    EXPECT_EQ(codecFor("2vuy"), 4);
    EXPECT_EQ(codecFor("8-bit"), 4);
    EXPECT_EQ(codecFor("2"), 2) << "a number is an index";
}

TEST_F(KnobValueTest, NamesAllThatAnAmbiguousBeginningCouldMean) {
    const std::string text = refusal("codec", "pro");
    EXPECT_NE(text.find("apch (\"ProRes 422 HQ\"), apcn (\"ProRes 422\")"), std::string::npos) << text;
}

TEST_F(KnobValueTest, OffersTheNearestEntriesForAnUnknownOne) {
    const std::string typing = refusal("codec", "prorez 422");
    EXPECT_NE(typing.find("nearest are apcn (\"ProRes 422\"), apch"), std::string::npos) << typing;
    const std::string part = refusal("codec", "jpeg");
    EXPECT_NE(part.find("nearest are mjpa"), std::string::npos) << part;
    EXPECT_NE(refusal("codec", "5"), "") << "an index beyond the last entry";
    EXPECT_NE(refusal("codec", "-1"), "");
    EXPECT_NE(refusal("codec", ""), "");
}

TEST_F(KnobValueTest, TakesPlainEntries) {
    applyKnob(fake.node, "quality", "lossless");
    EXPECT_EQ(fake.writer().quality, 5);
    applyKnob(fake.node, "quality", "h");
    EXPECT_EQ(fake.writer().quality, 3);
}

TEST_F(KnobValueTest, TakesWordsForASwitch) {
    for (const char* on : {"on", "ON", "1", "yes", "true"}) {
        fake.writer().writeTimeCode = false;
        applyKnob(fake.node, "writeTimeCode", on);
        EXPECT_TRUE(fake.writer().writeTimeCode) << on;
    }
    for (const char* off : {"off", "0", "no", "False"}) {
        fake.writer().writeTimeCode = true;
        applyKnob(fake.node, "writeTimeCode", off);
        EXPECT_FALSE(fake.writer().writeTimeCode) << off;
    }
}

TEST_F(KnobValueTest, TakesNumbersBeyondTheSlider) {
    applyKnob(fake.node, "fps", "240.5");
    EXPECT_EQ(fake.writer().fps, 240.5f);
    applyKnob(fake.node, "keyframerate", "-3");
    EXPECT_EQ(fake.writer().keyFrames, -3);
}

TEST_F(KnobValueTest, TakesAnyTextForTextAndFile) {
    applyKnob(fake.node, "settings", "a=b:c='d'");
    EXPECT_EQ(fake.writer().settings, "a=b:c='d'");
    applyKnob(fake.node, "audiofile", "/a b.wav");
    EXPECT_STREQ(fake.writer().audioFile, "/a b.wav");
}

TEST_F(KnobValueTest, PressesAButton) {
    applyKnob(fake.node, "advanced", "");
    EXPECT_EQ(fake.writer().settings, "dialog=1");
}

TEST_F(KnobValueTest, RefusesWhatIsNoNumberOrSwitch) {
    EXPECT_NE(refusal("fps", "fast"), "");
    EXPECT_NE(refusal("fps", "nan"), "");
    EXPECT_NE(refusal("fps", "inf"), "");
    EXPECT_NE(refusal("fps", "25 "), "");
    EXPECT_NE(refusal("fps", ""), "");
    EXPECT_NE(refusal("keyframerate", "1.5"), "");
    EXPECT_NE(refusal("keyframerate", "99999999999"), "");
    EXPECT_NE(refusal("writeTimeCode", "maybe"), "");
}

TEST_F(KnobValueTest, NamesAKnobThatIsNotThere) {
    EXPECT_NE(refusal("gamma", "1").find("\"gamma\""), std::string::npos);
}

}  // namespace
}  // namespace Corvel
