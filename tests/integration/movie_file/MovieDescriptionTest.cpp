#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

using namespace Tests;

std::uint32_t numberAt(const std::string& bytes, std::size_t offset, int width) {
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i));
    }
    return value;
}

// Fields of a video sample description (QuickTime File Format), counted from behind its size and type.
constexpr std::size_t compressorField = 42;
constexpr std::size_t depthField = 74;
constexpr std::size_t extensions = 78;

std::string pascalTextAt(const std::string& bytes, std::size_t offset) {
    return bytes.substr(offset + 1, static_cast<unsigned char>(bytes.at(offset)));
}

TEST(MovieDescriptionTest, NamesTheCompressor) {
    TestFolder folder;
    writeMovie(folder.file("a.mov"), TestPackets({}));

    const WalkedMovie walked = walkMovie(folder.file("a.mov"));
    EXPECT_EQ(pascalTextAt(walked.tracks.at(0).description, compressorField), "Test Codec");
    EXPECT_EQ(exiftool(folder.file("a.mov")).at("CompressorName"), "Test Codec");
}

TEST(MovieDescriptionTest, StatesDepth32WhereThereIsAlpha) {
    TestFolder folder;
    TestPackets::Request request;
    request.encoder = "prores_ks";
    request.pixels = AV_PIX_FMT_YUVA444P10;
    request.options = {{"profile", "4444"}, {"alpha_bits", "16"}};
    request.bitsPerCodedSample = 32;
    writeMovie(folder.file("a.mov"), TestPackets(request));

    const WalkedMovie walked = walkMovie(folder.file("a.mov"));
    EXPECT_EQ(walked.tracks.at(0).codec, "ap4h");
    EXPECT_EQ(numberAt(walked.tracks.at(0).description, depthField, 2), 32U);
    EXPECT_EQ(exiftool(folder.file("a.mov")).at("BitDepth"), 32);
}

TEST(MovieDescriptionTest, StatesColourPixelAspectAndFields) {
    TestFolder folder;
    TestPackets::Request request;
    request.encoder = "prores_ks";
    request.pixels = AV_PIX_FMT_YUV422P10;
    request.aspect = {2, 1};
    writeMovie(folder.file("a.mov"), TestPackets(request));

    const std::string description =
        walkMovie(folder.file("a.mov")).tracks.at(0).description.substr(extensions);
    EXPECT_NE(description.find("colrnclc"), std::string::npos);
    EXPECT_NE(description.find(std::string("pasp\0\0\0\2\0\0\0\1", 12)), std::string::npos);
    EXPECT_NE(description.find(std::string("fiel\1\0", 6)), std::string::npos);
    const nlohmann::json probed = ffprobe(folder.file("a.mov"));
    const nlohmann::json& video = probed.at("streams").at(0);
    EXPECT_EQ(video.at("sample_aspect_ratio"), "2:1");
    EXPECT_EQ(video.at("color_primaries"), "bt709");
    EXPECT_EQ(video.at("color_transfer"), "bt709");
    EXPECT_EQ(video.at("color_space"), "bt709");
    EXPECT_EQ(video.at("field_order"), "progressive");
    const nlohmann::json info = mediainfo(folder.file("a.mov"));
    EXPECT_EQ(std::stod(info.at(1).at("PixelAspectRatio").get<std::string>()), 2);
    EXPECT_EQ(info.at(1).at("colour_primaries"), "BT.709");
    EXPECT_EQ(exiftool(folder.file("a.mov")).at("PixelAspectRatio"), "2:1");
}

TEST(MovieDescriptionTest, ACodecWhoseDescriptionNeedsAPacketIsComplete) {
    TestFolder folder;
    TestPackets::Request request;
    request.encoder = "dnxhd";
    request.pixels = AV_PIX_FMT_YUV422P;
    request.width = 256;
    request.height = 128;
    request.options = {{"profile", "dnxhr_hq"}};
    request.tag = MKTAG('A', 'V', 'd', 'h');
    writeMovie(folder.file("a.mov"), TestPackets(request));

    EXPECT_EQ(problemsOf(folder.file("a.mov")), "");
    EXPECT_NE(walkMovie(folder.file("a.mov")).tracks.at(0).description.find("ACLR"), std::string::npos);
    EXPECT_EQ(decodedFrames(folder.file("a.mov")), 24);
}

TEST(MovieDescriptionTest, KnownNamesBecomeUserDataAndOthersKeepTheirOwn) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    writeMovie(path, TestPackets(tinyFrames(2)), {},
               {{},
                std::nullopt,
                {{"title", "Der Ball – мяч"},
                 {"author", "A. Nonymous"},
                 {"comment", "line one\nline two"},
                 {"copyright", "© 2024"},
                 {"shot:take", "17"},
                 {"empty", ""},
                 {alphaMetadataKey, "straight"}}},
               [](MovieFile& movie) {
                   movie.addMetadata({{"comment", "later"}, {"vendor.key", "ü"}});
               });

    ASSERT_EQ(problemsOf(path), "");
    const nlohmann::json probed = ffprobe(path);
    const nlohmann::json& tags = probed.at("format").at("tags");
    EXPECT_EQ(tags.at("title"), "Der Ball – мяч");
    EXPECT_EQ(tags.at("artist"), "A. Nonymous");  // ffmpeg's name for an author
    EXPECT_EQ(tags.at("comment"), "later");
    EXPECT_EQ(tags.at("copyright"), "© 2024");
    EXPECT_EQ(tags.at("shot:take"), "17");
    EXPECT_EQ(tags.at("vendor.key"), "ü");
    EXPECT_EQ(tags.at("com.corvel.alpha"), "straight");
    EXPECT_FALSE(tags.contains("empty"));
    const nlohmann::json info = mediainfo(path);
    EXPECT_EQ(info.at(0).at("Title"), "Der Ball – мяч");
    EXPECT_EQ(info.at(0).at("Copyright"), "© 2024");
    EXPECT_EQ(info.at(0).at("extra").at("com_corvel_alpha"), "straight");
    const nlohmann::json exif = exiftool(path);
    EXPECT_EQ(exif.at("Title"), "Der Ball – мяч");
    EXPECT_EQ(exif.at("UserData_aut"), "A. Nonymous");
    EXPECT_EQ(exif.at("Copyright"), "© 2024");
}

TEST(MovieDescriptionTest, AValueTooLongForUserDataIsKeptWhole) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");
    const std::string text(70'000, 'x');

    writeMovie(path, TestPackets(tinyFrames(2)), {}, {{}, std::nullopt, {{"comment", text}}});

    ASSERT_EQ(problemsOf(path), "");
    const nlohmann::json probed = ffprobe(path);
    EXPECT_EQ(probed.at("format").at("tags").at("comment"), text);
}

TEST(MovieDescriptionTest, AnEmptyValueRemovesAKey) {
    TestFolder folder;
    const std::string path = folder.file("a.mov");

    writeMovie(path, TestPackets(tinyFrames(2)), {}, {{}, std::nullopt, {{"title", "gone"}}},
               [](MovieFile& movie) {
                   movie.addMetadata({{"title", ""}});
               });

    const nlohmann::json probed = ffprobe(path);
    EXPECT_FALSE(probed.at("format").at("tags").contains("title"));
}

}  // namespace
}  // namespace Morvane::Worker
