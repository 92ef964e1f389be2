#include "host/play/OutputChoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

using testing::HasSubstr;

Morvane::QuickTime::VideoOutputHandle handle(std::uintptr_t number) {
    return reinterpret_cast<Morvane::QuickTime::VideoOutputHandle>(number);
}

const std::vector<OutputDeviceEntry> devices{
    {"Network 127.0.0.1:5004", handle(1), {}},
    {"Display 1: Big",
     handle(2),
     {{1280, 720, "1280 x 720, 25", 25000},
      {1920, 1080, "1920 x 1080, 23.976", 23976},
      {1920, 1080, "1920 x 1080, 24", 24000},
      {1920, 1080, "1920 x 1080, 25", 25000}}},
    {"Display 2: Bigger", handle(3), {}},
};

/// The sentence with which a wish is refused.
std::string refusal(const std::function<void()>& wish) {
    try {
        wish();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, Exit::Usage);
        return failure.what();
    }
    return "not refused";
}

std::string chosen(const std::string& text) {
    return chooseDevice(devices, text).name;
}

std::string mode(const std::string& text) {
    return chooseMode(devices[1], text).name;
}

TEST(OutputChoice, ADeviceIsChosenByItsNumber) {
    EXPECT_EQ(chosen("1"), "Network 127.0.0.1:5004");
    EXPECT_EQ(chosen("3"), "Display 2: Bigger");
}

TEST(OutputChoice, ADeviceIsChosenByItsNameWhateverTheLetterCase) {
    EXPECT_EQ(chosen("display 1: big"), "Display 1: Big");
}

TEST(OutputChoice, ADeviceIsChosenByTheBeginningOfItsName) {
    EXPECT_EQ(chosen("net"), "Network 127.0.0.1:5004");
    EXPECT_EQ(chosen("Display 2"), "Display 2: Bigger");
}

TEST(OutputChoice, AnAmbiguousBeginningIsRefusedNamingTheCandidates) {
    const std::string sentence = refusal([] { chosen("display"); });

    EXPECT_THAT(sentence, HasSubstr("2 (\"Display 1: Big\"), 3 (\"Display 2: Bigger\")"));
}

TEST(OutputChoice, AnUnknownDeviceIsRefusedNamingAll) {
    for (const char* unknown : {"0", "4", "12", "Projector", "", "Display 10"}) {
        EXPECT_THAT(refusal([&] { chosen(unknown); }), HasSubstr("1 (\"Network 127.0.0.1:5004\")"))
            << unknown;
    }
    EXPECT_THAT(refusal([] { chooseDevice({}, "1"); }), HasSubstr("there are: none"));
}

TEST(OutputChoice, TheNetworkDeviceTakesAnotherAddress) {
    const ChosenDevice device = chooseDevice(devices, "network 10.0.0.1:6000");

    EXPECT_EQ(device.entry, &devices[0]);
    EXPECT_EQ(device.name, "Network 10.0.0.1:6000");
}

TEST(OutputChoice, AModeIsChosenByItsName) {
    EXPECT_EQ(mode("1920 x 1080, 25"), "1920 x 1080, 25");
    EXPECT_EQ(mode("1920 X 1080, 23.976"), "1920 x 1080, 23.976");
}

TEST(OutputChoice, AModeIsChosenBySizeAndRate) {
    EXPECT_EQ(mode("1920x1080@25"), "1920 x 1080, 25");
    EXPECT_EQ(mode("1920X1080@24.0"), "1920 x 1080, 24");
    EXPECT_EQ(mode(" 1920 x 1080 @ 24 "), "1920 x 1080, 24");
    EXPECT_EQ(mode("1920x1080,24"), "1920 x 1080, 24");
}

TEST(OutputChoice, ARateIsMetAsPeopleWriteIt) {
    EXPECT_EQ(mode("1920x1080@23.98"), "1920 x 1080, 23.976");
    EXPECT_EQ(mode("1920x1080@23.976"), "1920 x 1080, 23.976");
}

TEST(OutputChoice, TheRateMayBeLeftOutWhereThereIsOne) {
    EXPECT_EQ(mode("1280x720"), "1280 x 720, 25");
    EXPECT_THAT(refusal([] { mode("1920x1080"); }), HasSubstr("23.976, 24, 25"));
}

TEST(OutputChoice, AnUnknownRateIsRefusedNamingThoseOfTheSize) {
    EXPECT_THAT(refusal([] { mode("1920x1080@26"); }), HasSubstr("23.976, 24, 25"));
    EXPECT_THAT(refusal([] { mode("1920x1080@nan"); }), HasSubstr("23.976, 24, 25"));
}

TEST(OutputChoice, AnUnknownSizeIsRefusedNamingAll) {
    for (const char* unknown :
         {"1921x1080@25", "25", "", "1920x1080@", "1920x1080@25p", "1920x1080-25", "x@25"}) {
        EXPECT_THAT(refusal([&] { mode(unknown); }), HasSubstr("1280x720, 1920x1080")) << unknown;
    }
}

}  // namespace
}  // namespace Corvel
