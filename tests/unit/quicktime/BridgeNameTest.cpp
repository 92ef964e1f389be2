#include "quicktime/BridgeName.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Morvane::QuickTime::makeBridgeName;

TEST(BridgeName, IsMadeOf32HexadecimalDigits) {
    const std::string sut = makeBridgeName();

    EXPECT_EQ(sut.size(), 32u);
    EXPECT_EQ(sut.find_first_not_of("0123456789abcdef"), std::string::npos) << sut;
}

TEST(BridgeName, IsNeverTheSameTwice) {
    std::set<std::string> names;
    for (int round = 0; round < 1000; ++round) {
        names.insert(makeBridgeName());
    }

    EXPECT_EQ(names.size(), 1000u);
}

}  // namespace
