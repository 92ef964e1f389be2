// Layers, parts and views of real files, whatever reads them, against what the image library gives channel by
// channel.

#include <OpenImageIO/deepdata.h>
#include <gtest/gtest.h>

#include "host/image_library/LibraryReader.h"
#include "host/images/ImageReader.h"
#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;
using Names = std::vector<std::string>;

constexpr int width = 37;
constexpr int height = 21;

ImageSpec specOf(const Names& channels, const char* compression, const std::string& name = "",
                 const std::string& view = "") {
    ImageSpec spec(width, height, static_cast<int>(channels.size()), OIIO::TypeHalf);
    spec.channelnames = channels;
    spec.attribute("compression", compression);
    if (!name.empty()) {
        spec.attribute("oiio:subimagename", name);
    }
    if (!view.empty()) {
        spec.attribute("view", view);
    }
    return spec;
}

// Halves, floats and whole numbers in one file.
ImageSpec mixedSpec(const char* compression) {
    ImageSpec spec =
        specOf({"R", "G", "B", "A", "big.R", "big.G", "big.B", "id", "odd.R", "odd.G", "odd.B"}, compression);
    spec.channelformats.assign(11, OIIO::TypeHalf);
    for (const std::size_t wide : {4, 5, 6, 9}) {
        spec.channelformats[wide] = OIIO::TypeFloat;
    }
    spec.channelformats[7] = OIIO::TypeUInt32;
    return spec;
}

// The samples of one channel as the library gives them, whole numbers as they are.
std::vector<double> channelOf(const std::string& path, const std::string& name, int part = 0) {
    const auto input = OIIO::ImageInput::open(path);
    const ImageSpec spec = input->spec(part);
    const int channel = spec.channelindex(name);
    EXPECT_GE(channel, 0) << name;
    if (spec.channelformat(channel) == OIIO::TypeUInt32) {
        std::vector<std::uint32_t> numbers(spec.image_pixels());
        EXPECT_TRUE(input->read_image(part, 0, channel, channel + 1, OIIO::TypeUInt32, numbers.data()));
        return {numbers.begin(), numbers.end()};
    }
    std::vector<float> samples(spec.image_pixels());
    EXPECT_TRUE(input->read_image(part, 0, channel, channel + 1, OIIO::TypeFloat, samples.data()));
    return {samples.begin(), samples.end()};
}

class ChosenPictures : public testing::Test {
protected:
    // That the picture that `choice` names has those channels, in that order, bit by bit.
    void expectChannels(const PictureChoice& choice, const Names& channels, int part = 0) {
        SCOPED_TRACE(testing::Message() << path << ": " << channels.front());
        for (const bool general : {false, true}) {
            const std::unique_ptr<ImageReader> reader =
                general ? std::make_unique<LibraryReader>(choice) : createImageReader(choice);
            Picture picture;
            reader->read(path, nullptr, picture);
            ASSERT_EQ(picture.channels(), static_cast<int>(channels.size()));
            ASSERT_EQ(picture.width(), width);
            for (int plane = 0; plane < picture.channels(); ++plane) {
                const std::vector<double> expected =
                    channelOf(path, channels[static_cast<std::size_t>(plane)], part);
                for (std::size_t i = 0; i < expected.size(); ++i) {
                    ASSERT_EQ(picture.row(plane, 0)[i], static_cast<float>(expected[i]))
                        << "general " << general << ", plane " << plane << ", sample " << i;
                }
            }
        }
    }

    std::string refusal(const PictureChoice& choice = {}) const {
        try {
            Picture picture;
            createImageReader(choice)->read(path, nullptr, picture);
        } catch (const UnreadableImage& error) {
            return error.what();
        }
        return "";
    }

    // Several parts, with noise of their own.
    void writeParts(const std::vector<ImageSpec>& specs) const {
        const auto output = OIIO::ImageOutput::create(path);
        ASSERT_TRUE(output->open(path, static_cast<int>(specs.size()), specs.data())) << output->geterror();
        for (std::size_t i = 0; i < specs.size(); ++i) {
            if (i > 0) {
                ASSERT_TRUE(output->open(path, specs[i], OIIO::ImageOutput::AppendSubimage));
            }
            std::vector<float> samples = noisePixels(specs[i]);
            for (float& sample : samples) {
                sample += static_cast<float>(i);
            }
            ASSERT_TRUE(output->write_image(OIIO::TypeFloat, samples.data())) << output->geterror();
        }
        ASSERT_TRUE(output->close());
    }

    const TemporaryFolder folder;
    const std::string path = folder / "a.exr";
};

class EveryCompression : public ChosenPictures, public testing::WithParamInterface<const char*> {};

TEST_P(EveryCompression, GivesLayersAndChannelsOfAnyType) {
    const ImageSpec spec = mixedSpec(GetParam());
    writeImage(path, spec, noisePixels(spec));
    expectChannels({}, {"R", "G", "B", "A"});
    expectChannels({.layer = "big"}, {"big.R", "big.G", "big.B"});
    expectChannels({.layer = "odd"}, {"odd.R", "odd.G", "odd.B"});
    expectChannels({.channels = {"id", "id", "id", ""}}, {"id", "id", "id"});
    expectChannels({.channels = {"", "id", "", "big.B"}}, {"R", "id", "B", "big.B"});
}

TEST_P(EveryCompression, GivesParts) {
    writeParts({specOf({"R", "G", "B", "A"}, GetParam(), "rgba.left", "left"),
                specOf({"R", "G", "B", "A"}, GetParam(), "rgba.right", "right"),
                specOf({"spec.R", "spec.G", "spec.B"}, GetParam(), "spec", "left")});
    expectChannels({}, {"R", "G", "B", "A"});
    expectChannels({.view = "right"}, {"R", "G", "B", "A"}, 1);
    expectChannels({.part = "rgba.right"}, {"R", "G", "B", "A"}, 1);
    expectChannels({.part = "2"}, {"spec.R", "spec.G", "spec.B"}, 2);
    expectChannels({.layer = "spec"}, {"spec.R", "spec.G", "spec.B"}, 2);
}

INSTANTIATE_TEST_SUITE_P(ChosenPictures, EveryCompression,
                         testing::Values("none", "zip", "zips", "rle", "piz"),
                         [](const auto& one) { return std::string(one.param); });

TEST_F(ChosenPictures, GivesLayersOfTiles) {
    ImageSpec spec = specOf({"R", "G", "B", "diffuse.R", "diffuse.G", "diffuse.B"}, "zip");
    spec.tile_width = spec.tile_height = 16;
    writeImage(path, spec, noisePixels(spec));
    expectChannels({.layer = "diffuse"}, {"diffuse.R", "diffuse.G", "diffuse.B"});
}

TEST_F(ChosenPictures, ReadsChannelsThatLieFarApart) {
    Names names{"R", "G", "B"};
    for (int i = 0; i < 30; ++i) {
        names.push_back("layer" + std::to_string(i) + ".x");
    }
    const ImageSpec spec = specOf(names, "piz");
    writeImage(path, spec, noisePixels(spec));
    expectChannels({.channels = {"", "", "", "layer29.x"}}, {"R", "G", "B", "layer29.x"});
}

TEST_F(ChosenPictures, SayWhatWasPicked) {
    writeParts({specOf({"R", "G", "B"}, "zip", "one"), specOf({"R", "G", "B"}, "piz", "two")});
    EXPECT_EQ(createImageReader({.part = "one"})->readHeader(path).picked, "R, G, B of part 0 (one)");
    EXPECT_EQ(createImageReader({.part = "two"})->readHeader(path).picked, "R, G, B of part 1 (two)");
}

TEST_F(ChosenPictures, OfAPartHaveTheShotsMetadata) {
    for (const char* compression : {"zip", "piz"}) {
        ImageSpec first = specOf({"R", "G", "B"}, compression, "one");
        first.attribute("reelName", "A001");
        writeParts({first, specOf({"R", "G", "B"}, compression, "two")});
        EXPECT_EQ(createImageReader({.part = "two"})->readHeader(path).metadata.count("quicktime/reel"), 1U)
            << compression;
    }
}

TEST_F(ChosenPictures, NameTheFileThatDoesNotHaveThem) {
    const ImageSpec spec = mixedSpec("zip");
    writeImage(path, spec, noisePixels(spec));
    EXPECT_EQ(refusal({.layer = "bigg"}),
              "cannot read " + path + ": it has no layer \"bigg\" (layers: big, odd); did you mean \"big\"?");
}

TEST_F(ChosenPictures, DeepPartsAreRefused) {
    ImageSpec spec = specOf({"R", "G", "B", "A", "Z"}, "zips");
    spec.deep = true;
    OIIO::DeepData deep(spec);
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output->open(path, spec)) << output->geterror();
    ASSERT_TRUE(output->write_deep_image(deep)) << output->geterror();
    ASSERT_TRUE(output->close());
    EXPECT_EQ(refusal(), "cannot read " + path + ": it has deep samples, which must be flattened first");
}

TEST_F(ChosenPictures, OtherFormatsHavePartsToo) {
    const std::string pages = folder / "a.tif";
    ImageSpec spec(width, height, 3, OIIO::TypeUInt8);
    const auto output = OIIO::ImageOutput::create(pages);
    ASSERT_TRUE(output->open(pages, spec));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, plainPixels(spec, {0, 0, 0}).data()));
    ASSERT_TRUE(output->open(pages, spec, OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, plainPixels(spec, {1, 0, 0}).data()));
    ASSERT_TRUE(output->close());
    Picture picture;
    createImageReader({.part = "1"})->read(pages, nullptr, picture);
    EXPECT_EQ(picture.row(0, 0)[0], 1);
    createImageReader({.channels = {"B", "G", "R", ""}})->read(pages, nullptr, picture);
    EXPECT_EQ(picture.row(2, 0)[0], 0);
    EXPECT_THROW(createImageReader({.part = "2"})->read(pages, nullptr, picture), UnreadableImage);
}

// Bytes all over the headers are other ones: names, counts, views, windows, offsets.
TEST_F(ChosenPictures, DamagedHeadersEndInAnErrorOrAPicture) {
    writeParts({specOf({"R", "G", "B", "left.R"}, "zip", "rgba.left", "left"),
                specOf({"R", "G", "B"}, "zip", "rgba.right", "right")});
    const std::string bytes = bytesOf(path);
    const std::string other = folder / "damaged.exr";
    const std::vector<PictureChoice> choices{{}, {.view = "right"}, {.part = "1"}, {.layer = "rgba"}};
    for (std::size_t at = 4; at < 900; at += 7) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(at % 3 == 0 ? 0xff : at % 3 == 1 ? 0 : damaged[at] ^ 0x41);
        writeBytes(other, damaged);
        try {
            Picture picture;
            createImageReader(choices[at % choices.size()])->read(other, nullptr, picture);
        } catch (const UnreadableImage& error) {
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
        }
    }
}

TEST_F(ChosenPictures, OfFilesThatAreCutShortAreRefused) {
    writeParts({specOf({"R", "G", "B"}, "zip", "rgba.left", "left"),
                specOf({"R", "G", "B"}, "zip", "rgba.right", "right")});
    cutShort(path, 0.6);
    EXPECT_NE(refusal({.view = "right"}), "");
    cutShort(path, 0.1);
    EXPECT_NE(refusal({.view = "right"}), "");
}

}  // namespace
}  // namespace Corvel
