#include "host/colour_library/Conversion.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "host/render/Failure.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

class ConversionTest : public testing::Test {
protected:
    ConversionTest() { header.floatingPoint = true; }

    std::shared_ptr<const ColourConversion> open(const std::string& config = SHIPPED_CONFIG) {
        return makeConversion(config, request, {path, header});
    }
    /// What goes wrong, with the exit code in front.
    std::string failure(const std::string& config = SHIPPED_CONFIG) {
        try {
            open(config)->transform(ColourConversion::Part::Whole);
        } catch (const Failure& error) {
            return std::to_string(static_cast<int>(error.code)) + " " + error.what();
        }
        return "none";
    }
    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
    static std::array<float, 3> through(const ColourTransform& transform, std::array<float, 3> colour) {
        std::vector<float> scratch;
        transform.apply(&colour[0], &colour[1], &colour[2], 1, scratch);
        return colour;
    }

    TemporaryFolder folder;
    ColourRequest request;
    PictureHeader header;
    std::string path = "shot.1001.exr";
};

// A configuration with a file rule, a look, a variable and a space whose file may be missing.
constexpr const char* studio = R"(ocio_profile_version: 2
environment: {SHOT: "1"}
search_path: ""
roles: {scene_linear: lin, default: lin, aces_interchange: lin}
file_rules:
  - !<Rule> {name: Plates, colorspace: plate, pattern: "*plate*", extension: "*"}
  - !<Rule> {name: Default, colorspace: default}
displays:
  Monitor:
    - !<View> {name: Plain, colorspace: out}
active_displays: []
active_views: []
looks:
  - !<Look> {name: double, process_space: lin, transform: !<CDLTransform> {slope: [2, 2, 2]}}
colorspaces:
  - !<ColorSpace> {name: lin, aliases: [ACEScg], family: "", bitdepth: 32f, isdata: false}
  - !<ColorSpace> {name: out, family: "", bitdepth: 32f, isdata: false}
  - !<ColorSpace> {name: plate, family: "", bitdepth: 32f, isdata: false, to_scene_reference: !<CDLTransform> {slope: [4, 4, 4]}}
  - !<ColorSpace> {name: shot, family: "", bitdepth: 32f, isdata: false, to_scene_reference: !<FileTransform> {src: "grade_${SHOT}.cc"}}
)";

constexpr const char* grade =
    R"(<ColorCorrection id="a"><SOPNode><Slope>3 3 3</Slope><Offset>0 0 0</Offset><Power>1 1 1</Power></SOPNode></ColorCorrection>)";

TEST_F(ConversionTest, TakesTheFirstDisplayAndViewWhereNoneIsNamed) {
    EXPECT_EQ(open()->outputText(), "sRGB - Display / Filmic");
    EXPECT_EQ(open()->tags(), (DisplayTags{"bt709", "iec61966-2-1", "bt709"}));
}

TEST_F(ConversionTest, IgnoresLetterCaseInDisplaysAndViews) {
    request.display = "rec.2100-pq - DISPLAY";
    request.view = "un-tone-mapped";
    EXPECT_EQ(open()->outputText(), "Rec.2100-PQ - Display / Un-tone-mapped");
}

TEST_F(ConversionTest, MeetsTheStandardsFigures) {
    request.inputSpace = "Linear Rec.709 (sRGB)";
    request.view = "Un-tone-mapped";
    request.display = "Rec.1886 Rec.709 - Display";
    const auto television = open()->transform(ColourConversion::Part::Whole);
    EXPECT_NEAR(through(*television, {0.18F, 0.18F, 0.18F})[0], std::pow(0.18, 1 / 2.4), 1e-4);
    EXPECT_NEAR(through(*television, {1, 0, 0})[0], 1.0, 1e-4);
    EXPECT_NEAR(through(*television, {1, 0, 0})[1], 0.0, 2e-2);
    request.display = "Rec.2100-PQ - Display";
    // 100 cd/m2, ITU-R BT.2100, table 4.
    EXPECT_NEAR(through(*open()->transform(ColourConversion::Part::Whole), {1, 1, 1})[1], 0.5081, 2e-4);
}

TEST_F(ConversionTest, DecodesCameraLogsToTheirMakersMiddleGrey) {
    struct Grey {
        const char* space;
        float code;
    };
    for (const Grey& grey : {Grey{"ARRI LogC3 (EI800)", 0.391007F},
                             {"ARRI LogC4", 0.278396F},
                             {"S-Log3 S-Gamut3", 420.0F / 1023},
                             {"S-Log3 S-Gamut3.Cine", 420.0F / 1023},
                             {"V-Log V-Gamut", 433.0F / 1023},
                             {"Log3G10 REDWideGamutRGB", 1.0F / 3},
                             {"BMDFilm WideGamut Gen5", 0.38356F},
                             {"DaVinci Intermediate WideGamut", 0.336043F},
                             {"ACEScct", 0.413588F},
                             {"F-Log2", 0.391F},
                             {"Film log (Cineon)", 0.45732F},
                             {"CanonLog2 CinemaGamut", 0.398F}}) {
        request.inputSpace = grey.space;
        const auto light = open()->transform(ColourConversion::Part::ToLight);
        EXPECT_NEAR(through(*light, {grey.code, grey.code, grey.code})[1], 0.18, 0.0012) << grey.space;
    }
}

TEST_F(ConversionTest, GivesTheSameInTwoPartsAsInOne) {
    request.inputSpace = "ARRI LogC4";
    const auto conversion = open();
    const std::array<float, 3> colour{0.5F, 0.3F, 0.2F};
    const auto light = through(*conversion->transform(ColourConversion::Part::ToLight), colour);
    const auto two = through(*conversion->transform(ColourConversion::Part::FromLight), light);
    const auto one = through(*conversion->transform(ColourConversion::Part::Whole), colour);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(two[i], one[i], 1e-4);
    }
}

TEST_F(ConversionTest, FindsTheInputSpaceByRuleThenStatementThenChromaticities) {
    folder.write("studio.ocio", studio);
    header.colourSpace = "acescg";
    header.chromaticities = {0.64F, 0.33F, 0.30F, 0.60F, 0.15F, 0.06F, 0.3127F, 0.3290F};
    path = "/shots/plate.1001.exr";
    EXPECT_EQ(open(folder / "studio.ocio")->inputText(), "plate, by a file rule");
    path = "/shots/render.1001.exr";
    EXPECT_EQ(open(folder / "studio.ocio")->inputText(), "lin, by the file's metadata");
    header.colourSpace = "no such space";
    EXPECT_EQ(open()->inputText(), "Linear Rec.709 (sRGB), by the file's chromaticities");
    header.chromaticities.reset();
    EXPECT_EQ(open()->inputText(), "ACEScg, by the default file rule");
    header.floatingPoint = false;
    header.curve = "srgb";
    EXPECT_EQ(open()->inputText(), "sRGB - Texture, as usual for such files");
    request.inputSpace = "logc4";
    EXPECT_EQ(open()->inputText(), "ARRI LogC4, as asked for");
}

TEST_F(ConversionTest, KnowsTheUsualChromaticities) {
    header.chromaticities = {0.713F, 0.293F, 0.165F, 0.83F, 0.128F, 0.044F, 0.32168F, 0.33767F};
    EXPECT_EQ(open()->inputText(), "ACEScg, by the file's chromaticities");
    header.chromaticities = {0.7347F, 0.2653F, 0, 1, 0.0001F, -0.077F, 0.32168F, 0.33767F};
    EXPECT_EQ(open()->inputText(), "ACES2065-1, by the file's chromaticities");
    header.chromaticities = {0.5F, 0.3F, 0.2F, 0.6F, 0.1F, 0.1F, 0.3F, 0.3F};
    EXPECT_EQ(open()->inputText(), "ACEScg, by the default file rule");
}

TEST_F(ConversionTest, TakesAMovieForWhatTheDisplayOfItsTagsShows) {
    header.floatingPoint = false;
    header.curve = "srgb";
    struct Tagged {
        const char* primaries;
        const char* transfer;
        const char* space;
    };
    for (const Tagged& movie : {Tagged{"bt709", "iec61966-2-1", "sRGB - Display"},
                                {"bt709", "bt709", "Rec.1886 Rec.709 - Display"},
                                {"bt709", "smpte170m", "Rec.1886 Rec.709 - Display"},
                                {"bt2020", "bt2020-10", "Rec.2020 - Camera"},
                                {"bt2020", "smpte2084", "Rec.2100-PQ - Display"},
                                {"bt2020", "arib-std-b67", "Rec.2100-HLG - Display"},
                                {"smpte432", "iec61966-2-1", "Display P3 - Display"},
                                {"smpte432", "smpte428", "P3-D65 - Display"},
                                {"bt2020", "linear", "Linear Rec.2020"}}) {
        header.primaries = movie.primaries;
        header.transfer = movie.transfer;
        EXPECT_EQ(open()->inputSpace(), movie.space);
        EXPECT_TRUE(has(open()->inputText(), "by the movie's tags"));
        EXPECT_EQ(open()->inputDoubt(), "");
    }
    header.transfer = "";
    EXPECT_EQ(open()->inputText(), "sRGB - Texture, as usual for such files");
    EXPECT_EQ(
        open()->inputDoubt(),
        "no space is known for a movie whose tags are bt2020 and no transfer; they are taken for sRGB - Texture");
}

TEST_F(ConversionTest, TakesFilmDensitiesForFilmAndDoubtsWhereThereIsNoSuchSpace) {
    header.floatingPoint = false;
    header.curve = "cineon";
    EXPECT_EQ(open()->inputText(), "Film log (Cineon), by the file's printing densities");
    folder.write("studio.ocio", studio);
    const auto conversion = open(folder / "studio.ocio");
    EXPECT_EQ(conversion->inputSpace(), "lin");
    EXPECT_EQ(conversion->inputDoubt(),
              "no space is known for values with the curve cineon; they are taken for lin");
    PictureHeader other = header;
    other.colourSpace = "out";
    EXPECT_EQ(conversion->spaceOf(other), "out");
}

TEST_F(ConversionTest, UsesLooksAndVariables) {
    folder.write("studio.ocio", studio);
    folder.write("grade_2.cc", grade);
    request.looks = "+double";
    EXPECT_NEAR(
        through(*open(folder / "studio.ocio")->transform(ColourConversion::Part::Whole), {0.1F, 0, 0})[0],
        0.2, 1e-6);
    request.looks.clear();
    request.outputSpace = "lin";
    request.inputSpace = "shot";
    request.context = {{"SHOT", "2"}};
    EXPECT_NEAR(
        through(*open(folder / "studio.ocio")->transform(ColourConversion::Part::Whole), {0.1F, 0, 0})[0],
        0.3, 1e-6);
}

TEST_F(ConversionTest, NamesAFileThatTheConfigurationNeeds) {
    folder.write("studio.ocio", studio);
    request.inputSpace = "shot";
    const std::string reason = failure(folder / "studio.ocio");
    EXPECT_TRUE(has(reason, "3 ") && has(reason, "grade_1.cc")) << reason;
}

TEST_F(ConversionTest, OffersWhatThereIs) {
    request.display = "Rec709";
    EXPECT_TRUE(has(failure(), "2 there is no display \"Rec709\"") &&
                has(failure(), "Rec.1886 Rec.709 - Display"))
        << failure();
    request.display.clear();
    request.view = "ACES";
    EXPECT_TRUE(has(failure(), "has no view \"ACES\"") && has(failure(), "Filmic, Un-tone-mapped, Raw"));
    request.view.clear();
    request.inputSpace = "logc5";
    EXPECT_TRUE(has(failure(), "no colour space \"logc5\"") && has(failure(), "ARRI LogC4")) << failure();
    request.inputSpace.clear();
    request.outputSpace = "nowhere";
    EXPECT_TRUE(has(failure(), "no colour space \"nowhere\"")) << failure();
    request.outputSpace.clear();
    request.looks = "+warm";
    EXPECT_TRUE(has(failure(), "2 there is no look \"warm\"") && has(failure(), "there are none"))
        << failure();
}

TEST_F(ConversionTest, RefusesAConfigurationThatIsMissingOrBroken) {
    EXPECT_EQ(failure(folder / "none.ocio"), "3 there is no colour configuration " + (folder / "none.ocio"));
    folder.write("broken.ocio", "ocio_profile_version: 2\nroles: [");
    EXPECT_TRUE(has(failure(folder / "broken.ocio"), "3 the colour configuration "))
        << failure(folder / "broken.ocio");
    folder.write("empty.ocio", "");
    EXPECT_TRUE(has(failure(folder / "empty.ocio"), "cannot be used")) << failure(folder / "empty.ocio");
    std::filesystem::create_directory(folder / "folder");
    EXPECT_TRUE(has(failure(folder / "folder"), "cannot be used")) << failure(folder / "folder");
}

TEST_F(ConversionTest, HasNoTagsForValuesThatAreNoColours) {
    request.view = "Raw";
    EXPECT_EQ(open()->tags(), DisplayTags());
    request.view.clear();
    request.outputSpace = "ARRI LogC4";
    EXPECT_EQ(open()->tags(), DisplayTags());
}

}  // namespace
}  // namespace Corvel
