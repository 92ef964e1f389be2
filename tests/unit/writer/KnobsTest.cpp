#include <cstring>

#include "Kex/Image/Knob_Closure.h"
#include "tests/unit/writer/WriterFixture.h"

namespace Morvane::Writer {
namespace {

using Calls = std::vector<std::string>;

/// Writes down everything that is said to it, in order.
class RecordingClosure : public Kex::Image::Knob_Closure {
public:
    void operator()(Kex::Image::KnobKind kind, Kex::Image::KnobStorage storage, void* field, const char* name,
                    const char* label, const char* const* entries) override {
        std::string line = "knob " + std::to_string(kind) + " " + std::to_string(storage) + " " + name +
                           " \"" + label + "\"" + (field != nullptr ? "" : " no field");
        for (; entries != nullptr && *entries != nullptr; ++entries) {
            line += std::string(" [") + *entries + "]";
        }
        lines.push_back(line);
    }

    void tooltip(const char* text) override { lines.push_back(std::string("tooltip ") + text); }

    void setRange(double low, double high) override {
        lines.push_back("range " + std::to_string(low) + " " + std::to_string(high));
    }

    void setFlags(int flags) override { lines.push_back("flags " + std::to_string(flags)); }

    std::vector<std::string> lines;
};

class MovWriterKnobs : public Testing::WriterFixture {};

TEST_F(MovWriterKnobs, AreDeclaredInOrderWithLabelsRangesFlagsAndTooltips) {
    script.codecs = {"mjpa\tMotion JPEG A", "png \tPNG", nullptr};
    movWriter& sut = make();
    RecordingClosure closure;

    sut.knobs(closure);

    const std::vector<std::string> expected = {
        "knob 4 3 codec \"codec\" [mjpa\tMotion JPEG A] [png \tPNG]",
        "knob 32 17 advanced \"advanced\" no field",
        "knob 6 5 Flatten \"Fast Start\"",
        "tooltip Flattens a movie so it can be played while still downloading",
        "knob 8 1 fps \"fps\"",
        "range 0.000000 100.000000",
        "flags 1028",
        "knob 6 5 use_format_aspect \"use format aspect\"",
        "tooltip If on, use the incoming format's pixel aspect ratio.\nIf off, allow the codec to set the "
        "aspect "
        "ratio.\nCodecs writing formats such as PAL and NTSC should typically be allowed to set the aspect "
        "ratio, but "
        "you may want to override this for other codecs which otherwise assume square pixels.",
        "knob 4 3 quality \"quality\" [Min] [Low] [Normal] [High] [Max] [Lossless]",
        "flags 1024",
        "knob 3 3 keyframerate \"keyframe rate\"",
        "range 0.000000 10.000000",
        "flags 1024",
        "knob 2 2 audiofile \"audio file\"",
        "knob 8 1 audio_offset \"audio offset\"",
        "range -1000.000000 1000.000000",
        "tooltip Offset the audio file by the given number of seconds/frames. A value of -10 seconds means "
        "the first "
        "frame of the image sequence syncs to the 10 second mark of the audio. A value of +10 seconds means "
        "the audio "
        "will start 10 seconds into the image sequence",
        "knob 4 3 units \"units\" [Seconds] [Frames]",
        "knob 1 16 settings \"settings\"",
        "flags 1024",
        "knob 6 5 writeTimeCode \"write time code\"",
        "tooltip Add a time code track to the generated QuickTime file. This requires the presence of the "
        "\"input/timecode\" key in the metadata. It is possible to give the time code track its reel name "
        "though the "
        "\"quicktime/reel\" key in metadata. This is automatically read from any QuickTime file already "
        "containing a "
        "time code track and propagated through the tree. If this is not present the reel name will be "
        "written blank. "
        "Use the ModifyMetaData node to add it.\nIf the timecode is missing, the track will not be written.",
    };
    EXPECT_EQ(closure.lines, expected);
    // The worker's list itself is the entries', asked for again.
    EXPECT_EQ(calls(), Calls{"codecList"});
}

TEST_F(MovWriterKnobs, HaveTheirDefaults) {
    make();

    EXPECT_EQ(node->knob("codec")->get_value(), 0);
    EXPECT_EQ(node->knob("Flatten")->get_value(), 1);
    EXPECT_EQ(node->knob("fps")->get_value(), 24);
    EXPECT_EQ(node->knob("use_format_aspect")->get_value(), 0);
    EXPECT_EQ(node->knob("quality")->get_text(), "Max");
    EXPECT_EQ(node->knob("keyframerate")->get_value(), 1);
    EXPECT_EQ(node->knob("audiofile")->get_text(), "");
    EXPECT_EQ(node->knob("audio_offset")->get_value(), 0);
    EXPECT_EQ(node->knob("units")->get_text(), "Seconds");
    EXPECT_EQ(node->knob("settings")->get_text(), "");
    EXPECT_EQ(node->knob("writeTimeCode")->get_value(), 0);
}

TEST_F(MovWriterKnobs, SendTheNewCodecWithEmptiedSettings) {
    make();
    node->setDepth(4);
    node->knob("settings")->set_text("profile=3");

    EXPECT_TRUE(change("codec", 1));

    EXPECT_EQ(calls(),
              (Calls{"setCodec 1", "configure 2x2 key 1 quality 4 alpha settings \"\" fps 24.000000"}));
    EXPECT_EQ(node->knob("settings")->get_text(), "");
}

TEST_F(MovWriterKnobs, ReadTheNewCodecFromTheChangedKnobCutTowardsZero) {
    movWriter& sut = make();
    float elsewhere = 1.9F;
    Kex::Image::Knob changed(
        {Kex::Image::Knob_Float, Kex::Image::Store_Float, &elsewhere, "codec", nullptr, nullptr});

    EXPECT_EQ(sut.knob_changed(&changed), 1);

    EXPECT_EQ(calls().front(), "setCodec 1");
}

TEST_F(MovWriterKnobs, EditTheSettingsAndTakeOverWhatTheDialogLeft) {
    make();
    node->knob("codec")->set_value(1);
    node->knob("settings")->set_text("before");
    script.codecAnswer = 0;

    EXPECT_TRUE(node->knobChanged(*node->knob("advanced")));

    EXPECT_EQ(calls(), (Calls{"setCodec 1", "configure 2x2 key 1 quality 4 settings \"before\" fps 24.000000",
                              "editSettings \"before\"", "getKeyFrameRate", "getFrameRate", "getQuality",
                              "getCodec"}));
    EXPECT_EQ(node->knob("settings")->get_text(), "edited");
    EXPECT_EQ(node->knob("keyframerate")->get_value(), 5);
    EXPECT_EQ(node->knob("fps")->get_value(), 30);
    EXPECT_EQ(node->knob("quality")->get_value(), 2);
    EXPECT_EQ(node->knob("codec")->get_value(), 0);
}

TEST_F(MovWriterKnobs, TellTheWorkerAboutTheFormatsAspect) {
    make();

    EXPECT_TRUE(change("use_format_aspect", 1));
    EXPECT_TRUE(change("use_format_aspect", 0));

    EXPECT_EQ(calls(), (Calls{"setUseFormatAspect on", "setUseFormatAspect off"}));
}

TEST_F(MovWriterKnobs, ConfigureAfterQualityKeyFrameRateAndFrameRate) {
    make();

    EXPECT_TRUE(change("quality", 5));
    EXPECT_TRUE(change("keyframerate", 12));
    EXPECT_TRUE(change("fps", 23.976));

    EXPECT_EQ(calls(), (Calls{"configure 2x2 key 1 quality 5 settings \"\" fps 24.000000",
                              "configure 2x2 key 12 quality 5 settings \"\" fps 24.000000",
                              "configure 2x2 key 12 quality 5 settings \"\" fps 23.976000"}));
}

TEST_F(MovWriterKnobs, OfTheEndOfTheMovieSendNothing) {
    make();

    EXPECT_FALSE(change("audiofile", std::string("/a.wav")));
    EXPECT_FALSE(change("audio_offset", 3));
    EXPECT_FALSE(change("units", 1));
    EXPECT_FALSE(change("Flatten", 0));
    EXPECT_FALSE(change("writeTimeCode", 1));
    EXPECT_FALSE(change("settings", std::string("profile=3")));

    EXPECT_TRUE(calls().empty());
}

TEST_F(MovWriterKnobs, SayAlphaFromFourChannelsOn) {
    make();

    for (const int depth : {1, 3, 4, 5}) {
        node->setDepth(depth);
        change("quality", 4);
        EXPECT_EQ(calls().front().find(" alpha") != std::string::npos, depth >= 4) << depth;
    }
}

}  // namespace
}  // namespace Morvane::Writer
