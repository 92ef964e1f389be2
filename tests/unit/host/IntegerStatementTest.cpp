#include "host/images/IntegerStatement.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <random>
#include <utility>

#include "host/image_library/LibraryReader.h"
#include "host/images/ImageWriter.h"
#include "tests/unit/host/IntegerStatementFixture.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

class IntegerStatementTest : public IntegerStatementFixture {};

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
