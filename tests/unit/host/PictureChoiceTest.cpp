#include "host/images/PictureChoice.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using Names = std::vector<std::string>;

FilePart partOf(const Names& channels, const std::string& name = "", const std::string& view = "") {
    FilePart part;
    part.name = name;
    part.view = view;
    for (const std::string& channel : channels) {
        part.channels.push_back({channel, "half"});
    }
    return part;
}

FileContents fileOf(const std::vector<FilePart>& parts, const Names& views = {}) {
    FileContents contents;
    contents.parts = parts;
    contents.views = views;
    return contents;
}

// The names of the chosen channels, behind the number of their part: "0: R G B A".
std::string chosen(const FileContents& contents, const PictureChoice& choice) {
    const ChosenPicture picture = choosePicture(contents, choice);
    std::string text = std::to_string(picture.part) + ":";
    const ChannelLayout& layout = picture.layout;
    for (const int index : {layout.red, layout.green, layout.blue, layout.alpha}) {
        if (index >= 0) {
            text += " " + contents.parts.at(static_cast<std::size_t>(picture.part))
                              .channels.at(static_cast<std::size_t>(index))
                              .name;
        }
    }
    return text;
}

std::string refusal(const FileContents& contents, const PictureChoice& choice) {
    try {
        choosePicture(contents, choice);
    } catch (const BadPictureChoice& reason) {
        return reason.what();
    }
    return "";
}

PictureChoice layer(const std::string& name) {
    return {.layer = name};
}

PictureChoice view(const std::string& name) {
    return {.view = name};
}

const FileContents layered =
    fileOf({partOf({"A", "B", "G", "R", "N.X", "N.Y", "N.Z", "depth.Z", "diffuse.B", "diffuse.G", "diffuse.R",
                    "light.spec.b", "light.spec.g", "light.spec.r", "matte.a"})});

TEST(PictureChoice, TakesPlainColoursUnasked) {
    EXPECT_EQ(chosen(layered, {}), "0: R G B A");
}

TEST(PictureChoice, TakesTheFirstLayerWithColoursWhereNoneArePlain) {
    const FileContents file = fileOf({partOf({"Z", "a.R", "b.B", "b.G", "b.R", "b.A", "c.R", "c.G", "c.B"})});
    EXPECT_EQ(chosen(file, {}), "0: b.R b.G b.B b.A");
}

TEST(PictureChoice, TakesALayerByItsName) {
    EXPECT_EQ(chosen(layered, layer("diffuse")), "0: diffuse.R diffuse.G diffuse.B");
    EXPECT_EQ(chosen(layered, layer("DIFFUSE")), "0: diffuse.R diffuse.G diffuse.B");
    EXPECT_EQ(chosen(layered, layer("light.spec")), "0: light.spec.r light.spec.g light.spec.b");
}

TEST(PictureChoice, ShowsDirectionsOfALayerThatIsAskedForAsColours) {
    EXPECT_EQ(chosen(layered, layer("N")), "0: N.X N.Y N.Z");
    EXPECT_NE(refusal(fileOf({partOf({"X", "Y", "Z"})}), {}), "");
}

TEST(PictureChoice, OffersTheLayersThatThereAre) {
    EXPECT_EQ(refusal(layered, layer("difuse")),
              "it has no layer \"difuse\" (layers: N, depth, diffuse, light.spec, matte); did you mean "
              "\"diffuse\"?");
    EXPECT_EQ(refusal(fileOf({partOf({"R", "G", "B"})}), layer("x")), "it has no layer \"x\" (layers: none)");
}

TEST(PictureChoice, SaysWhatToChooseInsteadOfALayerWithoutColours) {
    EXPECT_EQ(
        refusal(layered, layer("depth")),
        "the layer \"depth\" has no colours, only depth.Z; colours are in --layer diffuse, --layer light.spec");
    EXPECT_EQ(refusal(fileOf({partOf({"Z", "id"})}), {}),
              "it has no colours, only Z, id; --channels Z shows a channel as grey");
}

TEST(PictureChoice, TakesChannelsByName) {
    EXPECT_EQ(chosen(layered, {.channels = {"", "", "", "matte.a"}}), "0: R G B matte.a");
    EXPECT_EQ(chosen(layered, {.channels = {"B", "G", "R", ""}}), "0: B G R") << "all colours, so no alpha";
    EXPECT_EQ(chosen(layered, {.channels = {"depth.Z", "depth.Z", "depth.Z", ""}}),
              "0: depth.Z depth.Z depth.Z");
    EXPECT_EQ(chosen(layered, {.layer = "diffuse", .channels = {"B", "", "R", ""}}),
              "0: diffuse.B diffuse.G diffuse.R")
        << "within the layer first";
    EXPECT_EQ(chosen(layered, {.layer = "diffuse", .channels = {"", "", "", "A"}}),
              "0: diffuse.R diffuse.G diffuse.B A");
    EXPECT_EQ(chosen(layered, {.channels = {"", "", "", "MATTE.A"}}), "0: R G B matte.a");
}

TEST(PictureChoice, OffersTheChannelsThatThereAre) {
    const std::string said = refusal(layered, {.channels = {"", "", "", "mate.a"}});
    EXPECT_EQ(said.find("it has no channel \"mate.a\" (channels: A, B, G, R, N.X"), 0U) << said;
    EXPECT_NE(said.find("did you mean \"matte.a\"?"), std::string::npos) << said;
}

const FileContents stereo =
    fileOf({partOf({"B", "G", "R", "Z", "diffuse.left.B", "diffuse.left.G", "diffuse.left.R",
                    "diffuse.right.B", "diffuse.right.G", "diffuse.right.R", "right.B", "right.G", "right.R",
                    "shared.R", "shared.G", "shared.B", "left.spec.R", "left.spec.G", "left.spec.B"})},
           {"left", "right"});

TEST(PictureChoice, TakesAView) {
    EXPECT_EQ(chosen(stereo, {}), "0: R G B");
    EXPECT_EQ(chosen(stereo, view("left")), "0: R G B");
    EXPECT_EQ(chosen(stereo, view("Right")), "0: right.R right.G right.B");
    EXPECT_EQ(chosen(stereo, {.layer = "diffuse", .view = "right"}),
              "0: diffuse.right.R diffuse.right.G diffuse.right.B");
    EXPECT_EQ(chosen(stereo, layer("spec")), "0: left.spec.R left.spec.G left.spec.B");
    EXPECT_EQ(chosen(stereo, {.view = "right", .channels = {"B", "G", "R", ""}}),
              "0: right.B right.G right.R");
}

TEST(PictureChoice, TakesLayersWithoutAViewInEachView) {
    EXPECT_EQ(chosen(stereo, {.layer = "shared", .view = "right"}), "0: shared.R shared.G shared.B");
}

TEST(PictureChoice, OffersTheViewsThatThereAre) {
    EXPECT_EQ(refusal(stereo, view("rihgt")),
              "it has no view \"rihgt\" (views: left, right); did you mean \"right\"?");
    EXPECT_NE(refusal(layered, view("left")).find("does not tell views apart"), std::string::npos);
    EXPECT_EQ(refusal(stereo, {.layer = "spec", .view = "right"}),
              "it has no layer \"spec\" (layers: diffuse, shared)");
}

TEST(PictureChoice, NeedsNoViewInAFileThatWasFoundByItsView) {
    EXPECT_EQ(chosen(layered, {.view = "right", .viewIsInName = true}), "0: R G B A");
    EXPECT_EQ(chosen(stereo, {.view = "right", .viewIsInName = true}), "0: right.R right.G right.B");
}

const FileContents parted = fileOf(
    {partOf({"R", "G", "B", "A"}, "rgba.left", "left"), partOf({"R", "G", "B", "A"}, "rgba.right", "right"),
     partOf({"Z"}, "depth.left", "left"), partOf({"R", "G", "B"}, "diffuse.left", "left"),
     partOf({"spec.R", "spec.G", "spec.B"}, "spec.right", "right")},
    {"left", "right"});

TEST(PictureChoice, TakesAPartByNameOrNumber) {
    EXPECT_EQ(chosen(parted, {}), "0: R G B A");
    EXPECT_EQ(chosen(parted, {.part = "diffuse.left"}), "3: R G B");
    EXPECT_EQ(chosen(parted, {.part = "3"}), "3: R G B");
    EXPECT_EQ(chosen(parted, {.part = "1"}), "1: R G B A") << "with its view";
    EXPECT_EQ(chosen(fileOf({partOf({"Y"}, "1"), partOf({"R", "G", "B"}, "x")}), {.part = "1"}), "0: Y Y Y")
        << "a name goes before a number";
}

TEST(PictureChoice, OffersThePartsThatThereAre) {
    EXPECT_EQ(
        refusal(parted, {.part = "difuse.left"}),
        "it has no part \"difuse.left\" (parts: 0 to 4, rgba.left, rgba.right, depth.left, diffuse.left, "
        "spec.right); did you mean \"diffuse.left\"?");
    for (const char* number : {"5", "-1", "99999999999999999999", "1x", "0x1"}) {
        EXPECT_NE(refusal(parted, {.part = number}).find("it has no part"), std::string::npos) << number;
    }
    EXPECT_EQ(refusal(layered, {.part = "7"}), "it has no part \"7\" (there is only part 0)");
}

TEST(PictureChoice, FindsLayersAndViewsAmongParts) {
    EXPECT_EQ(chosen(parted, view("right")), "1: R G B A");
    EXPECT_EQ(chosen(parted, layer("diffuse")), "3: R G B") << "by the part's name without its view";
    EXPECT_EQ(chosen(parted, {.layer = "spec", .view = "right"}), "4: spec.R spec.G spec.B");
    EXPECT_EQ(chosen(parted, {.channels = {"", "", "", "rgba.R"}}), "0: R G B R");
    EXPECT_EQ(refusal(parted, {.layer = "diffuse", .view = "right"}),
              "it has no layer \"diffuse\" (layers: rgba, spec)");
    EXPECT_EQ(refusal(parted, {.part = "0", .view = "right"}),
              "part 0 (rgba.left) belongs to the view \"left\", not \"right\"");
}

TEST(PictureChoice, TakesAllChannelsFromOnePart) {
    EXPECT_EQ(chosen(parted, {.channels = {"depth.Z", "depth.Z", "depth.Z", ""}}), "2: Z Z Z");
    EXPECT_EQ(refusal(parted, {.channels = {"", "", "", "depth.Z"}}),
              "the channels of a picture come from one part, but \"depth.Z\" is in part 2 (depth.left) and "
              "others are in part 0 (rgba.left)");
}

TEST(PictureChoice, SaysWhatToChooseInsteadOfAPartWithoutColours) {
    EXPECT_EQ(refusal(parted, {.part = "depth.left"}),
              "part 2 (depth.left) has no colours, only Z; colours are in --layer rgba, --layer diffuse");
}

TEST(PictureChoice, RefusesDeepParts) {
    FileContents file = parted;
    file.parts[0].deep = true;
    EXPECT_EQ(refusal(file, {}),
              "part 0 (rgba.left) has deep samples, which must be flattened first; colours are in --layer "
              "diffuse");
    file.parts.resize(1);
    file.views.clear();
    EXPECT_EQ(refusal(file, {}), "it has deep samples, which must be flattened first");
}

TEST(PictureChoice, RefusesLuminanceWithChroma) {
    FileContents file = fileOf({partOf({"BY", "RY", "Y"})});
    file.parts[0].channels[0].subsampled = file.parts[0].channels[1].subsampled = true;
    EXPECT_NE(refusal(file, {}).find("luminance and chroma"), std::string::npos);
    EXPECT_NE(refusal(file, {.channels = {"Y", "Y", "Y", ""}}).find("not a sample for every pixel"),
              std::string::npos);
}

TEST(PictureChoice, TakesTheFirstChannelsOfFormatsThatDoNotNameThem) {
    FileContents file = fileOf({partOf({"u", "v", "w"})});
    file.namesChannels = false;
    EXPECT_EQ(chosen(file, {}), "0: u v w");
}

TEST(PictureChoice, EndsInAnErrorWhateverAFileClaims) {
    EXPECT_EQ(refusal(fileOf({}), {}), "it has no pictures");
    EXPECT_EQ(refusal(fileOf({partOf({})}), {}), "it has no colours, only none");
    EXPECT_EQ(refusal(fileOf({partOf({"R", "G", "B"}, "a", "left")}, {"right", "left"}), {}),
              "none of its parts belongs to the view \"right\"");
    const FileContents odd = fileOf({partOf({"", ".", "..", "R.", "left", "left."})}, {"left", "left"});
    EXPECT_NE(refusal(odd, {}), "");
    EXPECT_NE(refusal(odd, layer("left")), "");
    FileContents many;
    for (int i = 0; i < 5000; ++i) {
        many.parts.push_back(partOf({"Z"}, std::string(200, 'x')));
    }
    EXPECT_LT(refusal(many, layer("y")).size(), 500U);
}

TEST(PictureChoice, IsToldInWords) {
    EXPECT_EQ(textOf(layered, choosePicture(layered, layer("diffuse"))), "diffuse.R, diffuse.G, diffuse.B");
    EXPECT_EQ(textOf(parted, choosePicture(parted, {.part = "3"})), "R, G, B of part 3 (diffuse.left)");
}

}  // namespace
}  // namespace Corvel
