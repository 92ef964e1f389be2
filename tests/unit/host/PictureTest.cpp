#include "host/images/Picture.h"

#include <gtest/gtest.h>

#include "host/images/CodeTables.h"

namespace Corvel {
namespace {

TEST(Picture, LaysOutPlanesOneAfterTheOther) {
    Picture sut;
    sut.reset(5, 3, 4);
    EXPECT_EQ(sut.row(0, 1) - sut.row(0, 0), 5);
    EXPECT_EQ(sut.row(1, 0) - sut.row(0, 0), 15);
    EXPECT_TRUE(sut.hasAlpha());
}

TEST(Picture, KeepsItsMemoryForASmallerPicture) {
    Picture sut;
    sut.reset(8, 8, 4);
    const float* first = sut.row(0, 0);
    sut.reset(4, 4, 3);
    EXPECT_EQ(sut.row(0, 0), first);
    sut.reset(8, 8, 4);
    EXPECT_EQ(sut.row(0, 0), first);
    EXPECT_EQ(sut.width(), 8);
}

TEST(Picture, ClearsEverySample) {
    Picture sut;
    sut.reset(2, 2, 4);
    for (int i = 0; i < 16; ++i) {
        sut.row(0, 0)[i] = 1;
    }
    sut.clear();
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(sut.row(0, 0)[i], 0);
    }
}

TEST(Picture, OfCodesTakesHalfTheMemoryAndIsOfFloatsAgainAfterReset) {
    Picture sut;
    EXPECT_FALSE(sut.allowsCodes());
    sut.allowCodes(true);
    sut.resetCodes(5, 3, 4, halfFloats());
    EXPECT_EQ(sut.table(), &halfFloats());
    EXPECT_EQ(sut.codeRow(1, 2) - sut.codeRow(0, 0), 25);
    sut.codeRow(3, 2)[4] = 1;
    sut.clear();
    EXPECT_EQ(sut.codeRow(3, 2)[4], 0);
    sut.reset(5, 3, 4);
    EXPECT_EQ(sut.table(), nullptr);
    EXPECT_TRUE(sut.allowsCodes());
}

TEST(Picture, CountsBytesBeyondFourGiB) {
    EXPECT_EQ(Picture::bytes(65536, 65536, 4), std::size_t{65536} * 65536 * 16);
}

}  // namespace
}  // namespace Corvel
