#include "host/images/IntegerStatement.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <utility>

#include "host/image_library/LibraryReader.h"
#include "host/images/ImageReader.h"
#include "host/images/ImageWriter.h"
#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

std::vector<float> samplesOf(const Picture& picture) {
    const float* const first = picture.row(0, 0);
    return {first, first + picture.planeStride() * static_cast<std::size_t>(picture.channels())};
}

void expectSame(const PictureHeader& actual, const PictureHeader& expected, const std::string& what) {
    EXPECT_EQ(actual.display, expected.display) << what;
    EXPECT_EQ(actual.data, expected.data) << what;
    EXPECT_EQ(actual.pixelAspect, expected.pixelAspect) << what;
    EXPECT_EQ(actual.hasAlpha, expected.hasAlpha) << what;
    EXPECT_EQ(actual.bits, expected.bits) << what;
    EXPECT_EQ(actual.floatingPoint, expected.floatingPoint) << what;
    EXPECT_EQ(actual.curve, expected.curve) << what;
    EXPECT_EQ(actual.colourSpace, expected.colourSpace) << what;
    EXPECT_EQ(actual.chromaticities, expected.chromaticities) << what;
    EXPECT_EQ(actual.primaries, expected.primaries) << what;
    EXPECT_EQ(actual.transfer, expected.transfer) << what;
    EXPECT_EQ(actual.picked, expected.picked) << what;
    EXPECT_EQ(actual.metadata, expected.metadata) << what;
    EXPECT_EQ(attributesOf(actual), expected.attributes) << what;
}

/// The file is ordinary, and header and picture are what the image library makes of it.
void expectOrdinary(const std::string& path, const PictureChoice& choice = {}, const std::string& what = "") {
    const std::optional<IntegerStatement> statement = stateOfIntegers(path, choice);
    ASSERT_TRUE(statement) << path << " " << what;
    Picture actual;
    Picture expected;
    LibraryReader library(choice);
    expectSame(statement->header, library.readHeader(path), path + " " + what);
    expectSame(createImageReader(choice)->read(path, nullptr, actual), library.read(path, nullptr, expected),
               path + " " + what);
    EXPECT_EQ(samplesOf(actual), samplesOf(expected)) << path << " " << what;
}

std::string bytesOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A number of four bytes, the first the highest.
std::string bigEndian(std::size_t number) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
    return bytes;
}

/// A PNG chunk of these four letters and the data behind them.
std::string pngChunk(const std::string& typeAndData) {
    return bigEndian(typeAndData.size() - 4) + typeAndData +
           bigEndian(libdeflate_crc32(0, typeAndData.data(), typeAndData.size()));
}

/// Where chunks end that are not the header.
constexpr std::size_t endOfPngHeader = 8 + 12 + 13;

class IntegerStatementTest : public testing::Test {
protected:
    /// Writes noise by the image library; the file's path.
    std::string written(const std::string& name, const ImageSpec& spec) const {
        writeImage(folder / name, spec, noisePixels(spec));
        return folder / name;
    }
    std::string tenBitDpx(const char* order = "big") const {
        ImageSpec spec(37, 11, 3, OIIO::TypeUInt16);
        spec.attribute("oiio:BitsPerSample", 10);
        spec.attribute("oiio:Endian", order);
        return written("a.dpx", spec);
    }
    std::string pngWith(const std::string& chunks) const {
        const std::string path = written("a.png", ImageSpec(9, 5, 3, OIIO::TypeUInt8));
        std::string bytes = bytesOf(path);
        writeBytes(path, bytes.insert(endOfPngHeader, chunks));
        return path;
    }
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
    void expectLeft(const std::string& path, const std::string& what) const {
        EXPECT_FALSE(stateOfIntegers(path, {})) << what;
    }
    /// Puts a number where that is in the file, as the file orders its bytes.
    static void put(const std::string& path, std::size_t at, std::uint32_t number, std::size_t size) {
        std::string bytes = bytesOf(path);
        const bool big = bytes[0] == 'S';
        for (std::size_t i = 0; i < size; ++i) {
            bytes[at + (big ? size - 1 - i : i)] = static_cast<char>(number >> 8 * i);
        }
        writeBytes(path, bytes);
    }

    const TemporaryFolder folder;
};

TEST_F(IntegerStatementTest, PngSaysTheSameToBothReaders) {
    for (const OIIO::TypeDesc& type : {OIIO::TypeUInt8, OIIO::TypeUInt16}) {
        for (int channels = 1; channels <= 4; ++channels) {
            for (const char* space : {"", "sRGB"}) {
                ImageSpec spec(9, 5, channels, type);
                if (*space != 0) {
                    spec.attribute("oiio:ColorSpace", space);
                }
                spec.attribute("oiio:UnassociatedAlpha", 1);
                expectOrdinary(written("a.png", spec));
            }
        }
    }
}

TEST_F(IntegerStatementTest, PngWithUsualChunksSaysTheSameToBothReaders) {
    const std::string gamma = pngChunk("gAMA" + bigEndian(45455));
    const std::string srgb = pngChunk(std::string("sRGB\0", 5));
    std::string primaries = "cHRM";
    for (const int share : {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000}) {
        primaries += bigEndian(static_cast<std::size_t>(share));
    }
    const std::string square = pngChunk("pHYs" + bigEndian(2835) + bigEndian(2835) + '\1');
    const std::string text = pngChunk(std::string("tEXtSoftware\0somebody's", 23));
    const std::string time = pngChunk(std::string("tIME\x07\xEA\x0B\x15\x14\x05\x06", 11));
    for (const std::string& chunks :
         {gamma, srgb, gamma + srgb, srgb + gamma, gamma + pngChunk(primaries), square, text, time,
          gamma + srgb + pngChunk(primaries) + square + text + time}) {
        expectOrdinary(pngWith(chunks), {}, chunks);
    }
}

TEST_F(IntegerStatementTest, PngWithAnythingElseIsLeftToTheLibrary) {
    const std::string gamma = pngChunk("gAMA" + bigEndian(45455));
    for (const std::string& chunks :
         {pngChunk("gAMA" + bigEndian(100000)), pngChunk("gAMA" + bigEndian(45454)), gamma + gamma,
          pngChunk(std::string("sRGB\7", 5)), pngChunk("cHRM" + std::string(32, '\1')),
          pngChunk("pHYs" + bigEndian(2) + bigEndian(1) + '\0'),
          pngChunk("oFFs" + bigEndian(2) + bigEndian(0) + '\0'), pngChunk("iCCPx"), pngChunk("eXIfMM"),
          pngChunk("cICP\1\1\0\1"), pngChunk("tRNS" + std::string(6, '\0')), pngChunk("iTXtSoftware"),
          pngChunk("PLTEabc"), pngChunk(std::string("tEXtcolorSpace\0ACEScg", 21)),
          pngChunk(std::string("tEXtOrientation\0006", 17)),
          pngChunk(std::string("tEXtoiio:ColorSpace\0Linear", 26)), pngChunk("tEXtSoftware"),
          gamma.substr(0, gamma.size() - 1) + 'x'}) {
        expectLeft(pngWith(chunks), chunks);
    }
    std::string bytes = bytesOf(written("interlaced.png", ImageSpec(9, 5, 3, OIIO::TypeUInt8)));
    bytes[endOfPngHeader - 5] = 1;
    writeBytes(folder / "interlaced.png", bytes.replace(8, 25, pngChunk(bytes.substr(12, 17))));
    expectLeft(folder / "interlaced.png", "interlaced");
}

TEST_F(IntegerStatementTest, TiffSaysTheSameToBothReaders) {
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

TEST_F(IntegerStatementTest, TiffOfTheOtherOrderOfBytesSaysTheSameToBothReaders) {
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

TEST_F(IntegerStatementTest, TiffWithAnythingElseIsLeftToTheLibrary) {
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

TEST_F(IntegerStatementTest, TiffOfSeveralPagesIsLeftToTheLibrary) {
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

TEST_F(IntegerStatementTest, DpxSaysTheSameToBothReaders) {
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

TEST_F(IntegerStatementTest, DpxOfEveryTransferSaysTheSameToBothReadersOrIsLeftToTheLibrary) {
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

TEST_F(IntegerStatementTest, DpxWithAnythingElseIsLeftToTheLibrary) {
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

TEST_F(IntegerStatementTest, DpxWhosePixelsBeginEarlierHasNoTimeCodeAndNoRate) {
    constexpr std::size_t genericBytes = 1664;
    const std::string path = tenBitDpx();
    put(path, 4, genericBytes, 4);
    put(path, 808, genericBytes, 4);
    // Which would be a rate and a time code if that part of the header were there.
    put(path, 1724, 0x41C80000, 4);
    put(path, 1920, 0x01020304, 4);

    expectOrdinary(path);

    EXPECT_TRUE(stateOfIntegers(path, {})->header.metadata.empty());
}

TEST_F(IntegerStatementTest, WhatTheHostWritesIsOrdinary) {
    Picture picture;
    PictureHeader header;
    header.metadata = {
        {"input/timecode", "10:11:12:13"}, {"quicktime/reel", "A012C003"}, {"input/frame_rate", "23.976"}};
    for (const char* name : {"a.dpx", "a.png", "a.tif", "a.tiff"}) {
        for (const int channels : {3, 4}) {
            picture.reset(21, 5, channels);
            std::fill_n(picture.row(0, 0), picture.planeStride() * static_cast<std::size_t>(channels), 0.25F);
            writeImage(folder / name, picture, header, ImageValues::LinearLight);
            if (std::string(name) != "a.dpx" || channels == 3) {
                expectOrdinary(folder / name);
            }
        }
    }
}

TEST_F(IntegerStatementTest, ChannelsThatAreChosenAreTheSameToBothReaders) {
    ImageSpec spec(9, 5, 4, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    const std::string path = written("a.png", spec);
    for (const PictureChoice& choice :
         {PictureChoice{.channels = {"B", "G", "R", ""}}, PictureChoice{.channels = {"A", "A", "A", "R"}},
          PictureChoice{.channels = {"", "", "", "G"}}, PictureChoice{.part = "0"},
          PictureChoice{.view = "left", .viewIsInName = true}}) {
        expectOrdinary(path, choice, choice.channels[0]);
    }
}

TEST_F(IntegerStatementTest, AFileOfAnotherKindThanItsNameSaysIsLeftToTheLibrary) {
    const std::string path = tenBitDpx();
    for (const char* name : {"b.png", "b.tif", "b.jpg", "b"}) {
        std::filesystem::copy_file(path, folder / name);
        expectLeft(folder / name, name);
    }
}

/// What reading a file comes to: the header's main fields and the samples, or why there is none.
std::string outcomeOf(ImageReader&& reader, const std::string& path, std::vector<float>& samples) {
    Picture picture;
    try {
        const PictureHeader header = reader.read(path, nullptr, picture);
        samples = samplesOf(picture);
        std::string text = header.curve + " " + header.colourSpace + " " + header.picked + " " +
                           std::to_string(header.pixelAspect) + " " + std::to_string(header.bits) + " " +
                           std::to_string(header.display.width) + " " + std::to_string(header.data.x);
        for (const auto& [key, value] : header.metadata) {
            text += " " + key + "=" + value;
        }
        return text;
    } catch (const UnreadableImage& reason) {
        samples.clear();
        return reason.what();
    }
}

/// Makes the checks of all chunks right again.
void mendPng(std::string& bytes) {
    for (std::size_t at = 8; at + 12 <= bytes.size();) {
        const auto* const length = reinterpret_cast<const unsigned char*>(bytes.data()) + at;
        const std::size_t count = std::size_t{length[0]} << 24 | std::size_t{length[1]} << 16 |
                                  std::size_t{length[2]} << 8 | length[3];
        if (count > bytes.size() - at - 12) {
            return;
        }
        bytes.replace(at, count + 12, pngChunk(bytes.substr(at + 4, count + 4)));
        at += count + 12;
    }
}

TEST_F(IntegerStatementTest, WhateverIsChangedInAFileBothReadersMakeTheSameOfIt) {
    ImageSpec spec(13, 7, 3, OIIO::TypeUInt16);
    spec.attribute("oiio:ColorSpace", "sRGB");
    spec.attribute("XResolution", 72.0f);
    spec.attribute("YResolution", 72.0f);
    spec.attribute("dpx:InputDevice", "A002");
    spec.attribute("dpx:FrameRate", 24.0f);
    const std::uint32_t timecode[2] = {0x01020304, 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    std::mt19937 random(7);
    for (const char* name : {"a.png", "a.tif", "a.dpx"}) {
        spec.attribute("oiio:BitsPerSample", std::strcmp(name, "a.dpx") == 0 ? 10 : 16);
        const std::string path = written(name, spec);
        const std::string whole = bytesOf(path);
        int ordinary = 0;
        for (int attempt = 0; attempt < 600; ++attempt) {
            std::string bytes = whole;
            if (attempt % 10 == 0) {
                bytes.resize(random() % bytes.size());
            } else {
                for (unsigned change = random() % 2; change < 2; ++change) {
                    const unsigned char values[] = {0, 1, 2, 255, static_cast<unsigned char>(random())};
                    bytes[random() % bytes.size()] = static_cast<char>(values[random() % 5]);
                }
            }
            if (attempt % 3 != 0 && std::strcmp(name, "a.png") == 0) {
                mendPng(bytes);
            }
            writeBytes(path, bytes);
            std::vector<float> expected;
            std::vector<float> actual;
            // New readers each time: libtiff takes a strip that is longer than its rows for a good one and
            // leaves what it has not decoded as it was, which is what the reader read before.
            const std::string text = outcomeOf(LibraryReader(), path, expected);
            EXPECT_EQ(outcomeOf(std::move(*createImageReader()), path, actual), text)
                << name << ", attempt " << attempt;
            if (stateOfIntegers(path, {})) {
                EXPECT_EQ(actual, expected) << name << ", attempt " << attempt;
                ++ordinary;
            }
        }
        EXPECT_GT(ordinary, 50) << name;
    }
}

}  // namespace
}  // namespace Corvel
