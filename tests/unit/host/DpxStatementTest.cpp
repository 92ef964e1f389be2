#include "host/images/IntegerStatement.h"
#include "tests/unit/host/IntegerStatementFixture.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

class DpxStatementTest : public IntegerStatementFixture {};

TEST_F(DpxStatementTest, SaysTheSameToBothReaders) {
    for (const char* order : {"little", "big"}) {
        for (const char* space : {"", "Linear", "KodakLog", "Rec709"}) {
            ImageSpec spec(37, 11, 3, OIIO::TypeUInt16);
            const std::uint32_t timecode[2] = {0x01020304, 0};
            spec.attribute("oiio:BitsPerSample", 10);
            spec.attribute("oiio:Endian", order);
            spec.attribute("oiio:ColorSpace", space);
            spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
            spec.attribute("dpx:InputDevice", "A002");
            spec.attribute(*space == 'L' ? "dpx:FrameRate" : "dpx:TemporalFrameRate", 25.0f);
            const std::string path = written("a.dpx", spec);
            expectOrdinary(path, {}, space);
            EXPECT_EQ(stateOfIntegers(path, {})->header.metadata, (Metadata{{"input/timecode", "01:02:03:04"},
                                                                            {"input/frame_rate", "25"},
                                                                            {"quicktime/reel", "A002"}}));
        }
    }
}

TEST_F(DpxStatementTest, OfEveryTransferSaysTheSameToBothReadersOrIsLeftToTheLibrary) {
    const std::string path = tenBitDpx();
    std::string curves;
    for (std::uint32_t transfer = 0; transfer < 256; ++transfer) {
        put(path, 801, transfer, 1);
        if (const auto statement = stateOfIntegers(path, {})) {
            expectOrdinary(path, {}, std::to_string(transfer));
            curves += std::to_string(transfer) + " " + statement->header.curve + ", ";
        }
    }
    EXPECT_EQ(curves, "0 srgb, 1 cineon, 2 linear, 3 cineon, 4 srgb, 5 rec709, 6 rec709, 255 srgb, ");
}

TEST_F(DpxStatementTest, WithAnythingElseIsLeftToTheLibrary) {
    struct Change {
        const char* what;
        std::size_t at;
        std::uint32_t number;
        std::size_t size;
    };
    for (const Change& change : {Change{"turned", 768, 1, 2},
                                 {"two pictures", 770, 2, 2},
                                 {"signed numbers", 780, 1, 4},
                                 {"luminance", 800, 6, 1},
                                 {"an exponent", 801, 0, 1},
                                 {"12 bits", 803, 12, 1},
                                 {"method B", 804, 2, 2},
                                 {"run lengths", 806, 1, 2},
                                 {"padding", 812, 4, 4},
                                 {"an offset", 1408, 4, 4},
                                 {"a part of a larger picture", 1424, 74, 4},
                                 {"pixels that are not square", 1628, 2, 4}}) {
        const std::string path = tenBitDpx();
        put(path, 1948, 0x3FE66666, 4);  // 1.8
        put(path, change.at, change.number, change.size);
        expectLeft(path, change.what);
    }
}

TEST_F(DpxStatementTest, WhosePixelsBeginEarlierHasNoHeaderForFilmAndTelevision) {
    constexpr std::size_t genericBytes = 1664;
    const std::string path = tenBitDpx();
    put(path, 4, genericBytes, 4);
    put(path, 808, genericBytes, 4);
    // Which would be a rate and a time code if that part of the header were there.
    put(path, 1724, 0x41C80000, 4);
    put(path, 1920, 0x01020304, 4);

    expectOrdinary(path);

    const PictureHeader header = stateOfIntegers(path, {})->header;
    EXPECT_TRUE(header.metadata.empty());
    const Metadata attributes = attributesOf(header);
    EXPECT_EQ(attributes.count("dpx:Version"), 1U);
    for (const char* name : {"dpx:TimeCode", "dpx:FrameRate", "dpx:Signal", "dpx:WhiteLevel", "dpx:Format"}) {
        EXPECT_EQ(attributes.count(name), 0U) << name;
    }
}

}  // namespace
}  // namespace Corvel
