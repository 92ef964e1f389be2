#include "worker/codec/CodecTable.h"

#include "worker/codec/EncodingPlan.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavutil/pixdesc.h>
}

#include <gmock/gmock.h>

#include <cstring>
#include <set>

namespace Morvane::Worker {
namespace {

using testing::ElementsAre;

std::vector<std::string> types() {
    std::vector<std::string> all;
    for (const Codec& codec : codecTable())
        all.emplace_back(codec.type);
    return all;
}

/// A host stores the index, so the order is part of every saved project.
TEST(CodecTable, OrderIsFixedAndStartsWithTheClassicCodecs) {
    EXPECT_THAT(types(),
                ElementsAre("rle ", "cvid", "dvc ", "dvcp", "smc ", "h263", "avc1", "mjpa", "mp4v", "raw ",
                            "jpeg", "png ", "SVQ1", "tiff", "apco", "apcs", "apcn", "apch", "ap4h", "ap4x",
                            "2vuy", "v210", "v308", "v408", "v410", "b48r", "b64a", "r210", "dv5n", "dv5p",
                            "AVdn", "AVdh", "CFHD", "mjp2", "hvc1", "Hap1", "Hap5", "HapY"));
}

TEST(CodecTable, EveryTypeHasFourCharactersAndIsThereOnce) {
    std::set<std::string> seen;
    for (const std::string& type : types()) {
        EXPECT_EQ(type.size(), 4U) << type;
        EXPECT_TRUE(seen.insert(type).second) << type;
    }
}

TEST(CodecTable, EntryIsTypeTabName) {
    EXPECT_EQ(codecEntry(*findCodec("mjpa")), "mjpa\tMotion JPEG A");
    EXPECT_EQ(codecEntry(*findCodec("rle ")), "rle \tAnimation");
}

TEST(CodecTable, UnknownTypeIsNotFound) {
    EXPECT_EQ(findCodec("nope"), nullptr);
    EXPECT_EQ(findCodec("rle"), nullptr);
}

TEST(CodecTable, NamesHaveNoTab) {
    for (const Codec& codec : codecTable())
        EXPECT_EQ(std::strchr(codec.name, '\t'), nullptr) << codec.name;
}

TEST(CodecTable, EveryEncoderAndFilterIsInTheLibrary) {
    for (const Codec& codec : codecTable()) {
        EXPECT_NE(avcodec_find_encoder_by_name(codec.encoder), nullptr) << codec.encoder;
        for (const CodecPicture& picture : codec.pictures) {
            const char* encoder = picture.encoder ? picture.encoder : codec.encoder;
            EXPECT_NE(avcodec_find_encoder_by_name(encoder), nullptr) << encoder;
        }
        const char* filter = codec.bitstreamFilter ? codec.bitstreamFilter : "null";
        EXPECT_NE(av_bsf_get_by_name(filter), nullptr) << filter;
    }
}

TEST(CodecTable, BitsAndAlphaAreThoseOfThePixelFormats) {
    for (const Codec& codec : codecTable())
        for (const CodecPicture& picture : codec.pictures) {
            const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(picture.format);
            EXPECT_EQ(picture.bits, format.comp[0].depth) << codec.name;
            EXPECT_LE(picture.alpha, (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0) << codec.name;
        }
}

TEST(CodecTable, TagHasTheFirstCharacterInTheLowestByte) {
    EXPECT_EQ(codecTag("avc1"), 0x31637661U);
}

TEST(CodecTable, AlphaIsKnownOfTheCodecsThatHaveIt) {
    for (const char* type :
         {"rle ", "raw ", "png ", "tiff", "ap4h", "ap4x", "v408", "b64a", "CFHD", "mjp2", "Hap5"})
        EXPECT_TRUE(findCodec(type)->hasAlpha()) << type;
    for (const char* type : {"mjpa", "jpeg", "apch", "avc1", "v210", "Hap1", "HapY"})
        EXPECT_FALSE(findCodec(type)->hasAlpha()) << type;
}

}  // namespace
}  // namespace Morvane::Worker
