#include "host/image_library/FileStatement.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using OIIO::ImageSpec;

ImageSpec specOf(OIIO::TypeDesc type) {
    return ImageSpec(8, 8, 3, type);
}

TEST(CurveOf, GoesByTheFormatWhereTheFileSaysNothing) {
    EXPECT_EQ(curveOf(specOf(OIIO::TypeHalf)), "linear");
    EXPECT_EQ(curveOf(specOf(OIIO::TypeFloat)), "linear");
    EXPECT_EQ(curveOf(specOf(OIIO::TypeUInt8)), "srgb");
    EXPECT_EQ(curveOf(specOf(OIIO::TypeUInt16)), "srgb");
}

TEST(CurveOf, PrefersWhatTheFileSays) {
    struct Case {
        const char* space;
        const char* curve;
    };
    for (const Case& stated : {Case{"Linear", "linear"},
                               {"sRGB", "srgb"},
                               {"Rec709", "rec709"},
                               {"KodakLog", "cineon"},
                               {"Gamma2.2", "gamma2.2"},
                               {"Gamma1.8", "gamma1.8"},
                               {"GammaCorrected2.2", "srgb"}}) {
        ImageSpec spec = specOf(OIIO::TypeUInt16);
        spec.attribute("oiio:ColorSpace", stated.space);
        EXPECT_EQ(curveOf(spec), stated.curve) << stated.space;
    }
}

TEST(CurveOf, TakesAFloatFileThatSaysSrgbAtItsWord) {
    ImageSpec spec = specOf(OIIO::TypeFloat);
    spec.attribute("oiio:ColorSpace", "sRGB");
    EXPECT_EQ(curveOf(spec), "srgb");
}

TEST(CurveOf, ReadsTheTransferCharacteristicOfDpx) {
    struct Case {
        const char* transfer;
        const char* curve;
    };
    for (const Case& stated : {Case{"Printing density", "cineon"},
                               {"Logarithmic", "cineon"},
                               {"Linear", "linear"},
                               {"ITU-R 709-4", "rec709"},
                               {"SMPTE 274M", "rec709"},
                               {"Undefined", "srgb"}}) {
        ImageSpec spec = specOf(OIIO::TypeUInt16);
        spec.attribute("dpx:Transfer", stated.transfer);
        EXPECT_EQ(curveOf(spec), stated.curve) << stated.transfer;
    }
}

TEST(MetadataOf, IsEmptyForABareFile) {
    EXPECT_TRUE(metadataOf(specOf(OIIO::TypeHalf)).empty());
}

TEST(MetadataOf, ReadsOpenExrAttributes) {
    ImageSpec spec = specOf(OIIO::TypeHalf);
    const std::uint32_t timecode[2] = {0x01020304, 0};
    const int rate[2] = {24000, 1001};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    spec.attribute("reelName", "A001");
    EXPECT_EQ(metadataOf(spec), (Metadata{{"input/timecode", "01:02:03:04"},
                                          {"quicktime/reel", "A001"},
                                          {"input/frame_rate", "23.976"}}));
}

TEST(MetadataOf, CountsPairsOfFramesAboveThirtyASecond) {
    ImageSpec spec = specOf(OIIO::TypeHalf);
    const std::uint32_t timecode[2] = {0x01020323 | 1u << 15, 0};
    const int rate[2] = {48, 1};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    EXPECT_EQ(metadataOf(spec)["input/timecode"], "01:02:03:47");
}

TEST(MetadataOf, ReadsDpxHeaders) {
    ImageSpec spec = specOf(OIIO::TypeUInt16);
    spec.attribute("dpx:InputDevice", "A002");
    spec.attribute("dpx:TemporalFrameRate", 25.0f);
    EXPECT_EQ(metadataOf(spec), (Metadata{{"quicktime/reel", "A002"}, {"input/frame_rate", "25"}}));
    spec.attribute("dpx:FrameRate", 24.0f);
    EXPECT_EQ(metadataOf(spec)["input/frame_rate"], "24") << "the film header comes first";
}

TEST(MetadataOf, LeavesOutRatesThatAreNone) {
    ImageSpec spec = specOf(OIIO::TypeHalf);
    const int rate[2] = {24, 0};
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    EXPECT_TRUE(metadataOf(spec).empty());
}

}  // namespace
}  // namespace Corvel
