#include "tests/unit/host/IntegerStatementFixture.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

class TiffStatementTest : public IntegerStatementFixture {
protected:
    std::string tiffWith(const char* attribute, int value) const {
        ImageSpec spec(9, 5, 3, OIIO::TypeUInt16);
        spec.attribute(attribute, value);
        return written("a.tif", spec);
    }
    /// Little-endian, with another number for an entry of one 16-bit number. The last such entry counts: the
    /// directory is written twice.
    std::string tiffWithEntry(std::uint32_t tag, std::uint32_t value) const {
        ImageSpec spec(9, 5, 3, OIIO::TypeUInt16);
        spec.attribute("oiio:ColorSpace", "sRGB");
        const std::string path = written("a.tif", spec);
        const char entry[] = {static_cast<char>(tag & 0xFF), static_cast<char>(tag >> 8), 3, 0, 1, 0, 0, 0};
        const std::size_t at = bytesOf(path).rfind(std::string(entry, sizeof entry));
        EXPECT_NE(at, std::string::npos) << tag;
        put(path, at + sizeof entry, value, 2);
        return path;
    }
};

TEST_F(TiffStatementTest, SaysTheSameToBothReaders) {
    for (const char* compression : {"none", "zip", "lzw", "packbits"}) {
        for (const OIIO::TypeDesc& type : {OIIO::TypeUInt8, OIIO::TypeUInt16}) {
            for (int channels = 1; channels <= 4; ++channels) {
                for (const int straight : {0, 1}) {
                    ImageSpec spec(9, 50, channels, type);
                    if (channels == 2) {
                        spec.channelnames = {"Y", "A"};
                        spec.alpha_channel = 1;
                    }
                    spec.attribute("compression", compression);
                    spec.attribute("tiff:RowsPerStrip", channels == 2 ? 50 : 7);
                    spec.attribute("oiio:UnassociatedAlpha", straight);
                    spec.attribute("oiio:ColorSpace", straight != 0 ? "sRGB" : "");
                    spec.attribute("Software", "somebody's");
                    spec.attribute("Artist", "somebody");
                    spec.attribute("ImageDescription", "what it shows");
                    expectOrdinary(written("a.tif", spec), {}, compression);
                }
            }
        }
    }
}

TEST_F(TiffStatementTest, OfTheOtherOrderOfBytesSaysTheSameToBothReaders) {
    // Three pixels in one strip.
    const auto entry = [](const char* tag, char type, std::size_t count, const std::string& value) {
        return std::string(tag, 2) + '\0' + type + bigEndian(count) + value;
    };
    const auto word = [](int number) { return bigEndian(static_cast<std::size_t>(number) << 16); };
    std::string bytes = std::string("MM\0*", 4) + bigEndian(14) + std::string("\0\1\2\3\xFE\xFF", 6);
    bytes += std::string("\0\x08", 2) + entry("\1\0", 3, 1, word(3)) + entry("\1\1", 3, 1, word(1)) +
             entry("\1\2", 3, 1, word(16)) + entry("\1\3", 3, 1, word(1)) + entry("\1\6", 3, 1, word(1)) +
             entry("\1\x11", 4, 1, bigEndian(8)) + entry("\1\x15", 3, 1, word(1)) +
             entry("\1\x16", 3, 1, word(1));
    bytes[15] = 9;
    bytes += entry("\1\x17", 4, 1, bigEndian(6)) + bigEndian(0);
    writeBytes(folder / "a.tiff", bytes);

    expectOrdinary(folder / "a.tiff");
}

TEST_F(TiffStatementTest, WithAnythingElseIsLeftToTheLibrary) {
    expectLeft(tiffWith("Orientation", 6), "turned");
    expectLeft(tiffWithEntry(262, 0), "white is 0");
    expectLeft(tiffWithEntry(317, 3), "another predictor");
    expectLeft(tiffWithEntry(284, 2), "planes");
    expectLeft(tiffWithEntry(277, 2), "fewer samples than bits are given for");
    expectLeft(tiffWithEntry(278, 2), "more strips than places are given for");
    expectLeft(tiffWithEntry(40961, 65535), "Exif without a colour space");
    expectLeft(tiffWith("oiio:BitsPerSample", 12), "12 bits");
    expectLeft(tiffWith("Exif:Flash", 1), "Exif");
    for (const OIIO::TypeDesc& type : {OIIO::TypeFloat, OIIO::TypeHalf, OIIO::TypeInt16, OIIO::TypeUInt32}) {
        expectLeft(written("a.tif", ImageSpec(9, 5, 3, type)), type.c_str());
    }
    expectLeft(written("a.tif", ImageSpec(9, 5, 5, OIIO::TypeUInt8)), "5 channels");
    ImageSpec spec(64, 64, 3, OIIO::TypeUInt8);
    spec.attribute("planarconfig", "separate");
    expectLeft(written("a.tif", spec), "planes");
    spec = ImageSpec(64, 64, 3, OIIO::TypeUInt8);
    spec.attribute("PixelAspectRatio", 2.0f);
    spec.attribute("XResolution", 72.0f);
    spec.attribute("YResolution", 72.0f);
    expectLeft(written("a.tif", spec), "pixels that are not square");
    spec = ImageSpec(64, 64, 3, OIIO::TypeUInt8);
    spec.attribute("compression", "jpeg");
    expectLeft(written("a.tif", spec), "JPEG");
    spec = ImageSpec(64, 64, 3, OIIO::TypeUInt8);
    const std::vector<unsigned char> profile(200);
    spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, 200), profile.data());
    expectLeft(written("a.tif", spec), "a profile");
}

TEST_F(TiffStatementTest, OfSeveralPagesIsLeftToTheLibrary) {
    const ImageSpec spec(9, 5, 3, OIIO::TypeUInt8);
    const std::vector<float> pixels = noisePixels(spec);
    const auto output = OIIO::ImageOutput::create("a.tif");
    const ImageSpec pages[] = {spec, spec};
    ASSERT_TRUE(output->open(folder / "a.tif", 2, pages));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, pixels.data()));
    ASSERT_TRUE(output->open(folder / "a.tif", spec, OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, pixels.data()));
    ASSERT_TRUE(output->close());

    expectLeft(folder / "a.tif", "pages");
}

}  // namespace
}  // namespace Corvel
