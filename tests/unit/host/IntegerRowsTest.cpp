#include "host/images/IntegerRows.h"

#include <gtest/gtest.h>

#include <vector>

#include "host/images/CodeTables.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

/// One row of two pixels: 0, 1/4 … of the largest value in each form.
struct Stored {
    SampleForm form;
    std::vector<unsigned char> bytes;
    double highest;
    std::vector<double> samples;
};

const std::vector<Stored> forms{
    {SampleForm::Bytes, {0, 255, 128, 1, 2, 3}, 255, {0, 255, 128, 1, 2, 3}},
    {SampleForm::Words, {0, 0, 0xFF, 0xFF, 0, 0x80, 1, 0, 2, 0, 3, 0}, 65535, {0, 65535, 32768, 1, 2, 3}},
    {SampleForm::SwappedWords,
     {0, 0, 0xFF, 0xFF, 0x80, 0, 0, 1, 0, 2, 0, 3},
     65535,
     {0, 65535, 32768, 1, 2, 3}},
    // 0, 1023, 512 and 1, 2, 3.
    {SampleForm::SwappedTenBits,
     {0x00, 0x3F, 0xF8, 0x00, 0x00, 0x40, 0x20, 0x0C},
     1023,
     {0, 1023, 512, 1, 2, 3}},
    {SampleForm::TenBits, {0x00, 0xF8, 0x3F, 0x00, 0x0C, 0x20, 0x40, 0x00}, 1023, {0, 1023, 512, 1, 2, 3}},
};

TEST(IntegerRows, LooksUpTheLinearLightOfSamplesInEveryForm) {
    const Window window{0, 0, 2, 1};
    IntegerRows sut;
    for (const Stored& stored : forms) {
        for (const char* name : {"linear", "srgb", "cineon"}) {
            const LUT& curve = *LUT::find(name);
            Picture picture;
            picture.reset(2, 1, 3);
            sut.begin({stored.form, 3, {0, 1, 2, -1}, false, window}, curve, window, picture);

            sut.place(0, stored.bytes.data());

            for (int x = 0; x < 2; ++x) {
                for (int channel = 0; channel < 3; ++channel) {
                    const double value =
                        stored.samples[static_cast<std::size_t>(3 * x + channel)] / stored.highest;
                    EXPECT_NEAR(picture.row(channel, 0)[x], curve.toLinear(value), 2e-6)
                        << name << ", form " << static_cast<int>(stored.form) << ", " << x << ", " << channel;
                }
            }
        }
    }
}

TEST(IntegerRows, LeavesCodesWhereThePictureMayHaveThem) {
    const Window window{0, 0, 2, 1};
    IntegerRows sut;
    for (const Stored& stored : forms) {
        Picture picture;
        picture.allowCodes(true);
        sut.begin({stored.form, 3, {2, 1, 0, -1}, false, window}, *LUT::find("srgb"), window, picture);

        sut.place(0, stored.bytes.data());

        const auto highest = static_cast<unsigned>(stored.highest);
        ASSERT_EQ(picture.table(), &wholeNumbers(highest, *LUT::find("srgb")));
        for (int x = 0; x < 2; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                const double code = stored.samples[static_cast<std::size_t>(3 * x + 2 - channel)];
                EXPECT_EQ(picture.codeRow(channel, 0)[x], code)
                    << "form " << static_cast<int>(stored.form) << ", " << x << ", " << channel;
            }
        }
    }
}

TEST(IntegerRows, LeavesNoCodesWhereThePictureHasAlphaOrIsLarger) {
    const unsigned char pixel[] = {255, 0, 255, 51};
    IntegerRows sut;
    Picture picture;
    picture.allowCodes(true);
    sut.begin({SampleForm::Bytes, 4, {0, 1, 2, 3}, false, {0, 0, 1, 1}}, *LUT::find("srgb"), {0, 0, 1, 1},
              picture);
    sut.place(0, pixel);
    EXPECT_EQ(picture.table(), nullptr);
    EXPECT_FLOAT_EQ(picture.row(3, 0)[0], 0.2F);

    sut.begin({SampleForm::Bytes, 3, {0, 1, 2, -1}, false, {0, 0, 1, 1}}, *LUT::find("cineon"), {0, 0, 2, 1},
              picture);
    sut.place(0, pixel);
    ASSERT_EQ(picture.table(), nullptr);
    EXPECT_EQ(picture.row(0, 0)[1], 0.0F);
}

TEST(IntegerRows, MultipliesStraightAlphaInLinearLightAndLeavesOtherAlone) {
    const Window window{0, 0, 1, 1};
    const unsigned char pixel[] = {255, 0, 255, 51};
    for (const bool straight : {true, false}) {
        IntegerRows sut;
        Picture picture;
        picture.reset(1, 1, 4);
        sut.begin({SampleForm::Bytes, 4, {0, 1, 2, 3}, straight, window}, *LUT::find("srgb"), window,
                  picture);

        sut.place(0, pixel);

        EXPECT_FLOAT_EQ(picture.row(0, 0)[0], straight ? 0.2F : 1.0F);
        EXPECT_FLOAT_EQ(picture.row(1, 0)[0], 0);
        EXPECT_FLOAT_EQ(picture.row(2, 0)[0], straight ? 0.2F : 1.0F);
        EXPECT_FLOAT_EQ(picture.row(3, 0)[0], 0.2F);
    }
}

TEST(IntegerRows, GivesGreyToAllColours) {
    const Window window{0, 0, 1, 1};
    const unsigned char pixel[] = {255, 0};
    IntegerRows sut;
    Picture picture;
    picture.reset(1, 1, 4);
    sut.begin({SampleForm::Bytes, 2, {0, 0, 0, 1}, false, window}, *LUT::find("linear"), window, picture);

    sut.place(0, pixel);

    for (int channel = 0; channel < 3; ++channel) {
        EXPECT_EQ(picture.row(channel, 0)[0], 1);
    }
    EXPECT_EQ(picture.row(3, 0)[0], 0);
}

TEST(IntegerRows, PlacesOnlyWhatTheDisplayShows) {
    const Window stored{-1, -1, 4, 4};
    const Window display{0, 0, 4, 2};
    IntegerRows sut;
    Picture picture;
    picture.reset(4, 2, 3);
    picture.clear();
    sut.begin({SampleForm::Bytes, 1, {0, 0, 0, -1}, false, stored}, *LUT::find("linear"), display, picture);
    for (int y = 0; y < 4; ++y) {
        const unsigned char row[] = {static_cast<unsigned char>(51 * y), 51, 102, 255};
        sut.place(y, row);
    }

    // The file's columns 1 to 3 are the picture's 0 to 2; its rows 1 and 2 are the picture's 0 and 1.
    for (int y = 0; y < 2; ++y) {
        EXPECT_FLOAT_EQ(picture.row(0, y)[0], 0.2F);
        EXPECT_FLOAT_EQ(picture.row(0, y)[1], 0.4F);
        EXPECT_FLOAT_EQ(picture.row(0, y)[2], 1);
        EXPECT_FLOAT_EQ(picture.row(0, y)[3], 0);
    }
}

}  // namespace
}  // namespace Corvel
