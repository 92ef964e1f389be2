#include "worker/codec/Settings.h"

#include "worker/Status.h"

#include <gmock/gmock.h>

namespace Morvane::Worker {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

const Codec& codec(const char* type) {
    return *findCodec(type);
}

Settings parsed(const std::string& text, const char* type) {
    return Settings::parse(text, codec(type));
}

/// The sentence with which `text` is refused; empty where it is taken.
std::string refusal(const std::string& text, const char* type) {
    try {
        parsed(text, type);
    } catch (const StatusError& error) {
        EXPECT_EQ(error.status, Status::NotSupportedByCodec);
        return error.what();
    }
    return "";
}

TEST(Settings, EmptyTextMeansAllDefaults) {
    EXPECT_EQ(
        parsed("", "mjpa").text(),
        "bitdepth=8:alpha=none:primaries=bt709:transfer=bt709:matrix=smpte170m:range=pc:fields=progressive:"
        "threads=auto:chroma=auto:quantiser=auto");
    EXPECT_EQ(Settings::defaults(codec("apch")).text(),
              "profile=hq:bitdepth=10:alpha=none:primaries=bt709:transfer=bt709:matrix=bt709:range=tv:"
              "fields=progressive:threads=auto:quantiser=auto");
}

TEST(Settings, NormalisedTextOfEveryCodecIsItsOwnNormalisedText) {
    for (const Codec& one : codecTable()) {
        const std::string text = Settings::defaults(one).text();
        EXPECT_EQ(Settings::parse(text, one).text(), text) << one.name;
    }
}

TEST(Settings, NormalisedTextKeepsWhatWasGiven) {
    const std::string given =
        "profile=high422:bitdepth=10:colour=pq:fields=tff:aspect=59/54:threads=3:preset=fast:crf=7.50:"
        "timecode=01\\:00\\:00\\:00:reel=A001:meta.title=a\\:b";
    const std::string text = parsed(given, "avc1").text();
    EXPECT_EQ(text,
              "profile=high422:bitdepth=10:alpha=none:primaries=bt2020:transfer=smpte2084:matrix=bt2020nc:"
              "range=tv:fields=tff:"
              "aspect=59/54:threads=3:chroma=auto:preset=fast:tune=auto:level=auto:bframes=auto:crf=7.5:"
              "timecode=01\\:00\\:00\\:00:reel=A001:meta.title=a\\:b");
    EXPECT_EQ(parsed(text, "avc1").text(), text);
}

TEST(Settings, MetadataKeysAndValuesMayHoldAnyCharacter) {
    const Settings sut = parsed("meta.a\\=b\\:c='it'\\''s: = \\ x':meta.Title=1:meta.title=2", "rle ");
    EXPECT_EQ(parsed(sut.text(), "rle ").metadata, sut.metadata);
    EXPECT_THAT(sut.metadata,
                ElementsAre(Pair("Title", "1"), Pair("a=b:c", "it's: = \\ x"), Pair("title", "2")));
}

TEST(Settings, OfAKeyGivenTwiceTheLaterValueCounts) {
    EXPECT_EQ(parsed("threads=2:threads=3", "rle ").threads, 3);
}

TEST(Settings, UnknownKeyIsRefusedWithWhatThereIs) {
    const std::string sentence = refusal("sharpness=3", "rle ");
    EXPECT_THAT(sentence, HasSubstr("no setting \"sharpness\""));
    EXPECT_THAT(sentence, HasSubstr("bitdepth"));
}

TEST(Settings, KeyOfAnotherCodecIsRefusedWithItsName) {
    EXPECT_THAT(refusal("preset=slow", "rle "),
                HasSubstr("no effect for Animation; it belongs to H.264, HEVC"));
    EXPECT_THAT(refusal("profile=hq", "rle "), HasSubstr("profile has no effect for Animation"));
}

TEST(Settings, TextThatIsNoSettingsTextIsRefused) {
    EXPECT_THAT(refusal("hello", "rle "), HasSubstr("not of the form"));
    EXPECT_THAT(refusal("reel=", "rle "), HasSubstr("not of the form"));
    EXPECT_THAT(refusal("=1", "rle "), HasSubstr("not of the form"));
    EXPECT_THAT(refusal("a=b::c=d", "rle "), Not(HasSubstr("form")));
    EXPECT_THAT(refusal("meta.=1", "rle "), HasSubstr("lacks the name"));
}

TEST(Settings, HugeTextsAndValuesAreRefused) {
    EXPECT_THAT(refusal("meta.a=" + std::string(70000, 'x'), "rle "), HasSubstr("bytes long"));
    EXPECT_NE(refusal("threads=" + std::string(60000, '9'), "rle "), "");
    EXPECT_NE(refusal("threads=4294967297", "rle "), "");
    EXPECT_NE(refusal("crf=1e99", "avc1"), "");
    EXPECT_NE(refusal("crf=nan", "avc1"), "");
    EXPECT_NE(refusal("crf=-1", "avc1"), "");
    EXPECT_NE(refusal("quantiser=0", "mjpa"), "");
    EXPECT_NE(refusal("quantiser=32", "mjpa"), "");
    EXPECT_NE(refusal("quantiser=2.5", "mjpa"), "");
    EXPECT_NE(refusal("aspect=99999999/1", "rle "), "");
}

TEST(Settings, DepthMustBeOneThatTheCodecHas) {
    EXPECT_EQ(parsed("bitdepth=8", "png ").bits, 8);
    EXPECT_EQ(parsed("", "png ").bits, 16);
    EXPECT_THAT(refusal("bitdepth=10", "png "), HasSubstr("it has 8, 16"));
    EXPECT_NE(refusal("bitdepth=", "png "), "");
}

TEST(Settings, ProfileAloneBringsTheDepthItNeeds) {
    EXPECT_EQ(parsed("", "avc1").bits, 8);
    EXPECT_EQ(parsed("profile=high10", "avc1").bits, 10);
    EXPECT_EQ(parsed("profile=main12", "hvc1").bits, 12);
}

TEST(Settings, ProfileDepthAndChromaThatContradictEachOtherAreRefused) {
    EXPECT_THAT(refusal("profile=high:bitdepth=10", "avc1"),
                HasSubstr("no picture with profile=high bitdepth=10"));
    EXPECT_NE(refusal("profile=high422:chroma=444", "avc1"), "");
    EXPECT_NE(refusal("chroma=rgb:bitdepth=10", "avc1"), "");
    EXPECT_NE(refusal("profile=lb:bitdepth=10", "AVdh"), "");
}

TEST(Settings, AlphaIsPremultipliedWhereThereIsOneAndNoneElsewhere) {
    EXPECT_EQ(parsed("", "ap4h").alpha, AlphaMode::Premultiplied);
    EXPECT_EQ(parsed("", "apch").alpha, AlphaMode::None);
    EXPECT_EQ(parsed("alpha=straight", "png ").alpha, AlphaMode::Straight);
    EXPECT_EQ(parsed("alpha=none", "apch").alpha, AlphaMode::None);
    EXPECT_THAT(refusal("alpha=straight", "apch"), HasSubstr("has no alpha"));
    EXPECT_THAT(refusal("alpha=straight:bitdepth=10", "CFHD"), HasSubstr("no alpha with bitdepth=10"));
    EXPECT_NE(refusal("alpha=maybe", "png "), "");
}

TEST(Settings, CurveBelongsToStraightAlpha) {
    EXPECT_EQ(parsed("alpha=straight", "png ").curve, Curve::Srgb);
    EXPECT_EQ(parsed("alpha=straight:curve=gamma1.8", "png ").curve, Curve::Gamma18);
    EXPECT_EQ(parsed("alpha=straight:colour=pq:curve=cineon", "png ").curve, Curve::Cineon);
    EXPECT_EQ(parsed("alpha=straight:curve=cineon", "png ").text(),
              parsed(parsed("alpha=straight:curve=cineon", "png ").text(), "png ").text());
    EXPECT_THAT(refusal("curve=rec709", "png "), HasSubstr("no effect without alpha=straight"));
    EXPECT_THAT(refusal("curve=rec709", "apch"), HasSubstr("no effect"));
    EXPECT_THAT(refusal("alpha=straight:curve=wavy", "png "), HasSubstr("srgb|linear|rec709"));
}

/// Only transfers that leave no doubt; BT.709 is how the sRGB curve is tagged.
TEST(Settings, CurveThatNobodyNamesIsTheTransfersOrSrgb) {
    for (const auto& [transfer, curve] :
         {std::pair("linear", Curve::Linear), std::pair("gamma22", Curve::Gamma22),
          std::pair("gamma28", Curve::Gamma28), std::pair("pq", Curve::Pq), std::pair("hlg", Curve::Hlg),
          std::pair("bt709", Curve::Srgb), std::pair("srgb", Curve::Srgb), std::pair("bt601", Curve::Srgb)})
        EXPECT_EQ(parsed(std::string("alpha=straight:transfer=") + transfer, "png ").curve, curve)
            << transfer;
}

TEST(Settings, ColourPresetsSetPrimariesTransferAndMatrix) {
    const struct {
        const char* name;
        int primaries, transfer, matrix;
    } presets[] = {{"bt709", 1, 1, 1},   {"srgb", 1, 13, 1}, {"bt601", 6, 6, 6}, {"p3-d65", 12, 13, 1},
                   {"bt2020", 9, 14, 9}, {"pq", 9, 16, 9},   {"hlg", 9, 18, 9}};
    for (const auto& preset : presets) {
        const Settings sut = parsed(std::string("colour=") + preset.name, "v210");
        EXPECT_EQ(sut.colour.primaries, preset.primaries) << preset.name;
        EXPECT_EQ(sut.colour.transfer, preset.transfer) << preset.name;
        EXPECT_EQ(sut.colour.matrix, preset.matrix) << preset.name;
    }
    EXPECT_NE(refusal("colour=mauve", "v210"), "");
}

TEST(Settings, SingleColourKeysGoOverThePreset) {
    const Settings sut = parsed("transfer=hlg:colour=pq", "v210");
    EXPECT_EQ(sut.colour.transfer, AVCOL_TRC_ARIB_STD_B67);
    EXPECT_EQ(sut.colour.primaries, AVCOL_PRI_BT2020);
}

TEST(Settings, ColoursCanBeNumbers) {
    EXPECT_EQ(parsed("primaries=9:transfer=16:matrix=9", "v210").text(), parsed("colour=pq", "v210").text());
    EXPECT_NE(refusal("primaries=2", "v210"), "");
    EXPECT_NE(refusal("transfer=unknown", "v210"), "");
    EXPECT_NE(refusal("matrix=bt2020c", "v210"), "");
}

TEST(Settings, MatrixOfJpegIsFixed) {
    EXPECT_EQ(parsed("colour=bt709", "mjpa").colour.matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(parsed("matrix=bt601", "mjpa").colour.matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_THAT(refusal("matrix=bt709", "mjpa"), HasSubstr("Motion JPEG A always has smpte170m"));
}

TEST(Settings, RangeIsOnlyFreeWhereTheStreamStatesIt) {
    EXPECT_EQ(parsed("range=pc", "avc1").colour.range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(parsed("range=full", "hvc1").colour.range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(parsed("range=tv", "v210").colour.range, AVCOL_RANGE_MPEG);
    EXPECT_THAT(refusal("range=pc", "v210"), HasSubstr("can only state tv"));
    EXPECT_THAT(refusal("range=tv", "png "), HasSubstr("can only state pc"));
    EXPECT_THAT(refusal("range=tv", "jpeg"), HasSubstr("can only state pc"));
}

TEST(Settings, RgbInAStreamThatStatesItsMatrixHasNone) {
    const Settings sut = parsed("chroma=rgb", "avc1");
    EXPECT_EQ(sut.colour.matrix, AVCOL_SPC_RGB);
    EXPECT_EQ(sut.colour.range, AVCOL_RANGE_JPEG);
    EXPECT_NE(refusal("chroma=rgb:matrix=bt709", "avc1"), "");
    EXPECT_NE(refusal("chroma=rgb:range=tv", "avc1"), "");
    EXPECT_NE(refusal("matrix=gbr", "avc1"), "");
}

TEST(Settings, FieldsAreRefusedWhereTheCodecIsProgressive) {
    EXPECT_EQ(parsed("fields=tff", "apch").fields, AV_FIELD_TB);
    EXPECT_EQ(parsed("fields=bff", "dvc ").fields, AV_FIELD_BT);
    EXPECT_EQ(parsed("fields=progressive", "png ").fields, AV_FIELD_PROGRESSIVE);
    EXPECT_THAT(refusal("fields=tff", "png "), HasSubstr("no effect for PNG"));
    EXPECT_NE(refusal("fields=upside", "apch"), "");
}

TEST(Settings, AspectIsARatio) {
    const auto aspect = [](const std::string& text) {
        const AVRational ratio = parsed("aspect=" + text, "rle ").aspect;
        return std::pair(ratio.num, ratio.den);
    };
    EXPECT_EQ(aspect("59/54"), std::pair(59, 54));
    EXPECT_EQ(aspect("59\\:54"), std::pair(59, 54));
    EXPECT_EQ(aspect("2"), std::pair(2, 1));
    EXPECT_EQ(aspect("1.5"), std::pair(3, 2));
    for (const char* wrong : {"aspect=0/1", "aspect=1/0", "aspect=-1/1", "aspect=x", "aspect="})
        EXPECT_NE(refusal(wrong, "rle "), "") << wrong;
}

TEST(Settings, ThreadsAreCountedOrAutomatic) {
    EXPECT_EQ(parsed("threads=auto", "rle ").threads, 0);
    EXPECT_EQ(parsed("threads=7", "rle ").threads, 7);
    for (const char* wrong : {"threads=0", "threads=257", "threads=-1", "threads=two"})
        EXPECT_NE(refusal(wrong, "rle "), "") << wrong;
}

TEST(Settings, ProvisionalTimeCodeMustLookLikeOne) {
    EXPECT_EQ(parsed("timecode=01\\:00\\:00\\;00", "rle ").timecode, "01:00:00;00");
    for (const char* wrong :
         {"timecode=1", "timecode=aa\\:bb\\:cc\\:dd", "timecode=\\:\\:\\:", "timecode=1\\:2\\:3\\:4\\:5"})
        EXPECT_NE(refusal(wrong, "rle "), "") << wrong;
}

TEST(Settings, SummaryNamesTheCodecAndEveryOption) {
    const std::string summary = parsed("preset=slow", "avc1").summary();
    EXPECT_THAT(summary, HasSubstr("H.264 (avc1)\n"));
    EXPECT_THAT(summary, HasSubstr("preset: slow\n"));
    EXPECT_THAT(summary, HasSubstr("matrix: bt709\n"));
}

}  // namespace
}  // namespace Morvane::Worker
