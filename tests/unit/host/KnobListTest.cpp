#include "host/app/KnobList.h"

#include <gtest/gtest.h>

#include "host/app/CodecFacts.h"
#include "host/render/Log.h"
#include "tests/unit/host/FakeNode.h"

namespace Corvel {
namespace {

nlohmann::json knobNamed(const FakeNode& fake, const char* name) {
    return nlohmann::json::parse(knobJson(*fake.node.knob(name)).dump());
}

TEST(KnobJson, TellsWhatThePlugInDeclared) {
    const FakeNode fake;
    EXPECT_EQ(
        knobNamed(fake, "fps"),
        nlohmann::json::parse(R"({"name": "fps", "label": "rate", "kind": 8, "storage": 1, "entries": null,
                                        "min": 0, "max": 100, "flags": 1028, "tooltip": null, "value": 24})"));
    EXPECT_EQ(knobNamed(fake, "quality"),
              nlohmann::json::parse(R"({"name": "quality", "label": "quality", "kind": 4, "storage": 3,
                                        "entries": ["Min", "Low", "Normal", "High", "Max", "Lossless"],
                                        "min": null, "max": null, "flags": 0, "tooltip": null, "value": 4})"));
}

TEST(KnobJson, GivesEachKindItsOwnSortOfValue) {
    FakeNode fake;
    fake.node.knob("audiofile")->set_text("a.wav");
    fake.node.knob("fps")->set_value(23.976);
    EXPECT_EQ(knobNamed(fake, "fps")["value"], 23.976) << "not the nearest double of the float";
    EXPECT_EQ(knobNamed(fake, "writeTimeCode")["value"], false);
    EXPECT_EQ(knobNamed(fake, "keyframerate")["value"], 1);
    EXPECT_EQ(knobNamed(fake, "settings")["value"], "");
    EXPECT_EQ(knobNamed(fake, "audiofile")["value"], "a.wav");
    EXPECT_EQ(knobNamed(fake, "advanced")["value"], nullptr);
}

TEST(KnobText, ReadsWell) {
    const FakeNode fake;
    EXPECT_EQ(knobText(*fake.node.knob("fps")), "fps (\"rate\"): number, 24\n    slider from 0 to 100\n");
    EXPECT_EQ(knobText(*fake.node.knob("use_format_aspect")),
              "use_format_aspect: on or off, off\n    two\n    lines\n");
    EXPECT_EQ(knobText(*fake.node.knob("advanced")), "advanced: button\n");
}

TEST(CodecFacts, ReadThePropertiesOfThatName) {
    const auto facts = readCodecFacts(
        "I:codec/bits:10:I:codec/alpha:1:I:codec/intra:0:I:codec/lossless:1:S:codec/sizes:even widths:"
        "S:codec/quality:\"Min\\: crf=40\":S:profile:hq");
    EXPECT_EQ(nlohmann::json::parse(facts.dump()),
              nlohmann::json::parse(R"({"bits": 10, "alpha": true, "intra": false, "lossless": true,
                                        "sizes": "even widths", "quality": "Min: crf=40"})"));
}

TEST(CodecFacts, AreNullWhereTheHelperSaysNothing) {
    for (const char* text : {"", "0", "Error: -50", "S:codec/alpha:maybe"}) {
        EXPECT_EQ(readCodecFacts(text)["alpha"], nullptr) << text;
    }
    EXPECT_EQ(readCodecFacts("").size(), 6u);
}

TEST(CodecFacts, SurviveAListThatCannotBeRead) {
    logTo(nullptr);
    EXPECT_EQ(readCodecFacts("S:a:\\q")["bits"], nullptr);
}

}  // namespace
}  // namespace Corvel
