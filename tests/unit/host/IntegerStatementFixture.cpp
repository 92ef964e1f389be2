#include "tests/unit/host/IntegerStatementFixture.h"

#include <libdeflate.h>

#include "host/image_library/LibraryReader.h"
#include "host/images/IntegerStatement.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

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

}  // namespace

std::vector<float> samplesOf(const Picture& picture) {
    const float* const first = picture.row(0, 0);
    return {first, first + picture.planeStride() * static_cast<std::size_t>(picture.channels())};
}

std::string bigEndian(std::size_t number) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
    return bytes;
}

std::string pngChunk(const std::string& typeAndData) {
    return bigEndian(typeAndData.size() - 4) + typeAndData +
           bigEndian(libdeflate_crc32(0, typeAndData.data(), typeAndData.size()));
}

std::string IntegerStatementFixture::written(const std::string& name, const ImageSpec& spec) const {
    writeImage(folder / name, spec, noisePixels(spec));
    return folder / name;
}

std::string IntegerStatementFixture::tenBitDpx(const char* order) const {
    ImageSpec spec(37, 11, 3, OIIO::TypeUInt16);
    spec.attribute("oiio:BitsPerSample", 10);
    spec.attribute("oiio:Endian", order);
    return written("a.dpx", spec);
}

void IntegerStatementFixture::put(const std::string& path, std::size_t at, std::uint32_t number,
                                  std::size_t size) {
    std::string bytes = bytesOf(path);
    const bool big = bytes[0] == 'S';
    for (std::size_t i = 0; i < size; ++i) {
        bytes[at + (big ? size - 1 - i : i)] = static_cast<char>(number >> 8 * i);
    }
    writeBytes(path, bytes);
}

void IntegerStatementFixture::expectOrdinary(const std::string& path, const PictureChoice& choice,
                                             const std::string& what) {
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

void IntegerStatementFixture::expectLeft(const std::string& path, const std::string& what) {
    EXPECT_FALSE(stateOfIntegers(path, {})) << what;
}

}  // namespace Corvel
