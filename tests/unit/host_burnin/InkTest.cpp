#include "host/burnin/Ink.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Corvel {
namespace {

Picture filled(int channels, float value) {
    Picture picture;
    picture.reset(4, 3, channels);
    std::fill_n(picture.row(0, 0), picture.planeStride() * static_cast<std::size_t>(channels), value);
    return picture;
}

const Kex::Image::LUT* const srgb = Kex::Image::LUT::getLut(6);

TEST(Ink, MixesInTheValuesOfTheDisplay) {
    Picture picture = filled(3, 1);
    paint(picture, {srgb, 1}, {1, 1, 2, 1}, {{0, 0, 0}, 0.5F});
    EXPECT_NEAR(picture.row(0, 1)[1], srgb->toLinear(0.5), 1e-5);
    EXPECT_EQ(picture.row(0, 1)[0], 1);
    EXPECT_EQ(picture.row(0, 0)[1], 1);
}

TEST(Ink, LeavesValuesOfTheDisplayAsTheyAre) {
    Picture picture = filled(3, 1);
    paint(picture, {nullptr, 1}, {0, 0, 4, 3}, {{0, 0, 0}, 0.5F});
    EXPECT_EQ(picture.row(2, 2)[3], 0.5F);
}

TEST(Ink, LettersCoverAsMuchAsTheyDo) {
    Picture picture = filled(4, 0);
    const Coverage letters{2, 1, {255, 51}};
    paint(picture, {nullptr, 1}, {0, 0, 4, 3}, {{0, 0, 0}, 0}, letters, 1, 1, {{1, 0.5F, 0}, 1});
    EXPECT_EQ(picture.row(0, 1)[1], 1);
    EXPECT_EQ(picture.row(1, 1)[1], 0.5F);
    EXPECT_NEAR(picture.row(0, 1)[2], 0.2F, 1e-6F);
    EXPECT_NEAR(picture.row(3, 1)[2], 0.2F, 1e-6F) << "alpha";
    EXPECT_EQ(picture.row(0, 1)[0], 0);
}

TEST(Ink, WhiteIsTheDisplaysOwn) {
    Picture picture = filled(3, 0);
    paint(picture, {nullptr, 0.58F}, {0, 0, 1, 1}, {{1, 1, 1}, 1});
    EXPECT_FLOAT_EQ(picture.row(0, 0)[0], 0.58F);
}

TEST(Ink, HighlightsDoNotShineThrough) {
    Picture picture = filled(3, 1000);
    paint(picture, {srgb, 1}, {0, 0, 1, 1}, {{0, 0, 0}, 0.5F});
    EXPECT_NEAR(picture.row(0, 0)[0], srgb->toLinear(0.5), 1e-5);
    EXPECT_EQ(picture.row(0, 0)[1], 1000);
}

TEST(Ink, WhatLiesOutsideOfThePictureIsLeftOut) {
    Picture picture = filled(3, 0);
    const Coverage letters{2, 2, {255, 255, 255, 255}};
    paint(picture, {nullptr, 1}, {-1, -1, 2, 2}, {{0, 0, 0}, 0}, letters, -1, -1, {{1, 1, 1}, 1});
    EXPECT_EQ(picture.row(0, 0)[0], 1);
    EXPECT_EQ(std::count(picture.row(0, 0), picture.row(0, 0) + 12, 1.0F), 1);
    paint(picture, {nullptr, 1}, {10, 10, 5, 5}, {{1, 1, 1}, 1});
}

}  // namespace
}  // namespace Corvel
