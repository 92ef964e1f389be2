#include "host/images/IntegerFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>

#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;
using Reader = bool (*)(const IntegerFile&, IntegerScratch&, const IntegerSink&);

/// Noise, with areas that predictions fit.
std::vector<float> pixelsOf(const ImageSpec& spec) {
    std::vector<float> samples = noisePixels(spec);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = i % 64 < 32 ? samples[i] : static_cast<float>(i % 400) / 400;
    }
    return samples;
}

/// The file's samples as the image library gives them.
std::vector<unsigned> byLibrary(const std::string& path, IntegerFile& file) {
    ImageSpec options;
    options.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path, &options);
    const ImageSpec& spec = input->spec();
    file = {path, spec.width, spec.height, spec.nchannels, spec.format.size()};
    const auto count = spec.image_pixels() * static_cast<std::size_t>(spec.nchannels);
    std::vector<unsigned> samples;
    if (spec.format.size() == 1) {
        std::vector<std::uint8_t> bytes(count);
        EXPECT_TRUE(input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeUInt8, bytes.data()));
        samples.assign(bytes.begin(), bytes.end());
    } else {
        std::vector<std::uint16_t> words(count);
        EXPECT_TRUE(input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeUInt16, words.data()));
        samples.assign(words.begin(), words.end());
    }
    return samples;
}

/// The same by the reader that is tried. Samples of ten bits come as the library has them, of sixteen.
class Collected {
public:
    bool read(Reader reader, const IntegerFile& file) {
        samples.clear();
        return reader(
            file, scratch,
            {[this](SampleForm stated) { form = stated; },
             [&](int y, const void* row) { add(file, y, static_cast<const unsigned char*>(row)); }});
    }

    SampleForm form = SampleForm::Bytes;
    std::vector<unsigned> samples;

    /// Leaves `byte` everywhere in the memory that is kept from file to file.
    void leave(unsigned char byte) {
        scratch.stored.assign(std::size_t{1} << 20, byte);
        scratch.samples.assign(std::size_t{1} << 20, byte);
    }

private:
    void add(const IntegerFile& file, int y, const unsigned char* row) {
        EXPECT_EQ(samples.size(),
                  static_cast<std::size_t>(y) * static_cast<std::size_t>(file.width * file.channels));
        const bool tenBits = form == SampleForm::TenBits || form == SampleForm::SwappedTenBits;
        for (int i = 0; i < file.width * (tenBits ? 1 : file.channels); ++i) {
            if (tenBits) {
                std::uint32_t word = 0;
                std::memcpy(&word, row + 4 * i, 4);
                word = form == SampleForm::TenBits ? word : __builtin_bswap32(word);
                for (const int shift : {22, 12, 2}) {
                    const unsigned sample = word >> shift & 1023;
                    samples.push_back(sample << 6 | sample >> 4);
                }
            } else if (form == SampleForm::Bytes) {
                samples.push_back(row[i]);
            } else {
                std::uint16_t word = 0;
                std::memcpy(&word, row + 2 * i, 2);
                samples.push_back(form == SampleForm::Words ? word : __builtin_bswap16(word));
            }
        }
    }

    IntegerScratch scratch;
};

class IntegerFileTest : public testing::Test {
protected:
    /// Writes a file, reads it both ways and expects the same samples.
    void expectSame(Reader reader, const std::string& name, const ImageSpec& spec) {
        writeImage(folder / name, spec, pixelsOf(spec));
        IntegerFile file;
        const std::vector<unsigned> expected = byLibrary(folder / name, file);

        ASSERT_TRUE(sut.read(reader, file)) << name;

        EXPECT_EQ(sut.samples, expected) << name;
    }

    /// Whatever a byte is changed into, or wherever the file ends: no crash, and where it succeeds all rows,
    /// with nothing of the file before.
    void tryDamaged(Reader reader, const std::string& name) {
        IntegerFile file;
        const std::size_t samples = byLibrary(folder / name, file).size();
        const std::string whole = bytesOf(folder / name);
        const std::string damaged = folder / ("damaged-" + name);
        file.path = damaged;
        std::mt19937 random(5);
        for (int attempt = 0; attempt < 300; ++attempt) {
            std::string bytes = whole;
            if (attempt % 3 == 0) {
                bytes.resize(random() % bytes.size());
            } else {
                // The first bytes are the ones that say how all others are to be read.
                const std::size_t range =
                    attempt % 3 == 1 ? std::min<std::size_t>(bytes.size(), 900) : bytes.size();
                bytes[random() % range] = static_cast<char>(random());
            }
            writeBytes(damaged, bytes);
            sut.leave(0x00);
            const bool done = sut.read(reader, file);
            const std::vector<unsigned> afterZeros = sut.samples;
            sut.leave(0xAA);
            EXPECT_EQ(sut.read(reader, file), done) << "attempt " << attempt;
            EXPECT_TRUE(!done || sut.samples.size() == samples) << "attempt " << attempt;
            EXPECT_TRUE(!done || sut.samples == afterZeros) << "attempt " << attempt;
        }
    }

    const TemporaryFolder folder;
    Collected sut;
};

TEST_F(IntegerFileTest, PngOfEveryKindAndFilterIsReadAsByTheLibrary) {
    constexpr int everyFilter[] = {8, 16, 32, 64, 128, 248};  // libpng's flags; the last one chooses by row
    for (const OIIO::TypeDesc& type : {OIIO::TypeUInt8, OIIO::TypeUInt16}) {
        for (int channels = 1; channels <= 4; ++channels) {
            for (const int filter : everyFilter) {
                ImageSpec spec(37, 11, channels, type);
                spec.attribute("png:filter", filter);
                // The library multiplies where it is not told that alpha was straight.
                spec.attribute("oiio:UnassociatedAlpha", 1);
                expectSame(readPng, "a.png", spec);
            }
        }
    }
}

TEST_F(IntegerFileTest, PngInManyPiecesIsReadWhole) {
    ImageSpec spec(300, 200, 3, OIIO::TypeUInt16);
    expectSame(readPng, "a.png", spec);
    const std::string whole = bytesOf(folder / "a.png");

    EXPECT_NE(whole.find("IDAT", whole.find("IDAT") + 1), std::string::npos) << "it has one piece only";
}

TEST_F(IntegerFileTest, TiffOfEveryKindIsReadAsByTheLibrary) {
    for (const char* compression : {"none", "zip", "lzw", "packbits"}) {
        for (const OIIO::TypeDesc& type : {OIIO::TypeUInt8, OIIO::TypeUInt16}) {
            for (int channels = 1; channels <= 4; ++channels) {
                ImageSpec spec(37, 50, channels, type);
                spec.attribute("compression", compression);
                spec.attribute("tiff:RowsPerStrip", channels == 2 ? 50 : 7);
                spec.attribute("oiio:UnassociatedAlpha", 1);
                expectSame(readTiff, "a.tif", spec);
            }
        }
    }
}

TEST_F(IntegerFileTest, TiffInTilesOrPlanesIsLeftToTheLibrary) {
    ImageSpec tiled(64, 64, 3, OIIO::TypeUInt16);
    tiled.tile_width = tiled.tile_height = 32;
    const auto output = OIIO::ImageOutput::create("a.tif");
    ASSERT_TRUE(output->open(folder / "tiled.tif", tiled));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, pixelsOf(tiled).data()));
    ASSERT_TRUE(output->close());
    ImageSpec planes(64, 64, 3, OIIO::TypeUInt16);
    planes.attribute("planarconfig", "separate");
    writeImage(folder / "planes.tif", planes, pixelsOf(planes));

    for (const char* name : {"tiled.tif", "planes.tif"}) {
        IntegerFile file;
        byLibrary(folder / name, file);
        EXPECT_FALSE(sut.read(readTiff, file)) << name;
    }
}

TEST_F(IntegerFileTest, DpxOfTenBitsInEitherOrderOfBytesIsReadAsByTheLibrary) {
    for (const char* order : {"little", "big"}) {
        ImageSpec spec(37, 11, 3, OIIO::TypeUInt16);
        spec.attribute("oiio:BitsPerSample", 10);
        spec.attribute("oiio:Endian", order);
        expectSame(readTenBitDpx, "a.dpx", spec);
        const bool little = sut.form == SampleForm::TenBits;
        EXPECT_EQ(little, std::string(order) == "little");
    }
}

TEST_F(IntegerFileTest, DpxOfOtherKindsIsLeftToTheLibrary) {
    for (const int bits : {8, 10, 12, 16}) {
        for (const int channels : {3, 4}) {
            if (bits == 10 && channels == 3) {
                continue;
            }
            ImageSpec spec(37, 11, channels, bits == 8 ? OIIO::TypeUInt8 : OIIO::TypeUInt16);
            spec.attribute("oiio:BitsPerSample", bits);
            writeImage(folder / "a.dpx", spec, pixelsOf(spec));
            IntegerFile file;
            byLibrary(folder / "a.dpx", file);
            EXPECT_FALSE(sut.read(readTenBitDpx, file)) << bits << " bits, " << channels << " channels";
        }
    }
}

TEST_F(IntegerFileTest, AFileOfAnotherSizeThanTheLibrarySaysIsLeftToIt) {
    ImageSpec spec(37, 11, 3, OIIO::TypeUInt16);
    spec.attribute("oiio:BitsPerSample", 10);
    for (const auto& [name, reader] :
         {std::pair<const char*, Reader>{"a.png", readPng}, {"a.tif", readTiff}, {"a.dpx", readTenBitDpx}}) {
        writeImage(folder / name, spec, pixelsOf(spec));
        IntegerFile file;
        byLibrary(folder / name, file);
        for (const auto& [width, height] : {std::pair{38, 11}, {37, 12}, {36, 11}}) {
            IntegerFile other = file;
            other.width = width;
            other.height = height;
            EXPECT_FALSE(sut.read(reader, other)) << name << " " << width << "x" << height;
        }
    }
}

TEST_F(IntegerFileTest, DamagedFilesNeverGiveFewerRowsThanTheyPromise) {
    ImageSpec spec(37, 23, 3, OIIO::TypeUInt16);
    spec.attribute("oiio:BitsPerSample", 10);
    spec.attribute("tiff:RowsPerStrip", 7);
    for (const auto& [name, reader] :
         {std::pair<const char*, Reader>{"a.png", readPng}, {"a.tif", readTiff}, {"a.dpx", readTenBitDpx}}) {
        writeImage(folder / name, spec, pixelsOf(spec));
        tryDamaged(reader, name);
    }
}

TEST_F(IntegerFileTest, DamagedTiffNeverShowsWhatTheFileBeforeWas) {
    for (const char* compression : {"none", "lzw", "zip", "packbits"}) {
        SCOPED_TRACE(compression);
        ImageSpec spec(37, 23, 3, OIIO::TypeUInt16);
        spec.attribute("compression", compression);
        spec.attribute("tiff:RowsPerStrip", 7);
        writeImage(folder / "a.tif", spec, pixelsOf(spec));
        tryDamaged(readTiff, "a.tif");
    }
}

}  // namespace
}  // namespace Corvel
