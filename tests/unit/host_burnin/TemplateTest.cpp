#include "host/burnin/Template.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/burnin/FieldNames.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

class Templates : public testing::Test {
protected:
    std::string fileWith(const std::string& text) {
        const std::string path = folder / "template.json";
        std::ofstream(path) << text;
        return path;
    }

    std::string refusal(const std::string& text) {
        try {
            loadBurnIn(fileWith(text), fieldNames());
        } catch (const BadTemplate& fault) {
            EXPECT_NE(std::string(fault.what()).find("template.json"), std::string::npos) << fault.what();
            return fault.what();
        }
        return "";
    }

    TemporaryFolder folder;
};

TEST_F(Templates, BuiltInOnesCanBeLoaded) {
    for (const char* name : {"default", "frame", "timecode"}) {
        EXPECT_NE(burnInNames().find(name), std::string::npos);
        EXPECT_FALSE(loadBurnIn(name, fieldNames()).labels.empty()) << name;
    }
}

TEST_F(Templates, LabelsHaveTheirOwnStyleOrTheTemplates) {
    const BurnInTemplate sut = loadBurnIn(fileWith(R"({"size": 0.1, "color": "#ff0000", "margin": 0.2,
                     "texts": [{"at": "center", "text": "{frame}"}, {"text": "x", "size": 0.05, "box_opacity": 0}]})"),
                                          fieldNames());
    ASSERT_EQ(sut.labels.size(), 2u);
    EXPECT_EQ(sut.margin, 0.2);
    EXPECT_EQ(sut.labels[0].place, Place::Centre);
    EXPECT_EQ(sut.labels[0].style.size, 0.1);
    EXPECT_EQ(sut.labels[0].style.letters.colour, (std::array<float, 3>{1, 0, 0}));
    EXPECT_EQ(sut.labels[1].place, Place::BottomLeft);
    EXPECT_EQ(sut.labels[1].style.size, 0.05);
    EXPECT_EQ(sut.labels[1].style.box.opacity, 0);
}

TEST_F(Templates, RefuseWhatTheyDoNotKnow) {
    EXPECT_NE(refusal(R"({"texts": [{"text": "{shoe}"}]})").find("no field {shoe}"), std::string::npos);
    EXPECT_NE(refusal(R"({"texts": [{"at": "somewhere", "text": "x"}]})").find("somewhere"),
              std::string::npos);
    EXPECT_NE(refusal(R"({"colour": "#ffffff"})").find("\"colour\" means nothing here"), std::string::npos);
    for (const char* bad : {"", "{", "[]", R"({"size": 0})", R"({"size": "big"})", R"({"color": "red"})",
                            R"({"opacity": 2})", R"({"texts": [1]})", R"({"color": "#12345"})"}) {
        EXPECT_NE(refusal(bad), "") << bad;
    }
}

TEST_F(Templates, RefuseANameThatIsNone) {
    try {
        loadBurnIn("nothing", fieldNames());
        FAIL();
    } catch (const BadTemplate& fault) {
        EXPECT_NE(std::string(fault.what()).find("default, frame, timecode"), std::string::npos)
            << fault.what();
    }
}

TEST_F(Templates, ATextOfOnesOwnHasAPlace) {
    EXPECT_EQ(labelFrom("top-center=a=b", fieldNames()).place, Place::TopCentre);
    for (const char* bad : {"text", "above=text", "left={shoe}"}) {
        EXPECT_THROW(labelFrom(bad, fieldNames()), BadTemplate) << bad;
    }
}

}  // namespace
}  // namespace Corvel
