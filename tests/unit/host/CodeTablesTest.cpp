#include "host/images/CodeTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

namespace Corvel {
namespace {

using Kex::Image::CodeTable;
using Kex::Image::LUT;

TEST(CodeTables, HalfFloatsMeanWhatTheirBitsSay) {
    const float* const values = halfFloats().linear();
    ASSERT_EQ(halfFloats().size(), 65536U);
    EXPECT_EQ(values[0x0000], 0.0F);
    EXPECT_EQ(values[0x0001], 0x1p-24F);
    EXPECT_EQ(values[0x3C00], 1.0F);
    EXPECT_EQ(values[0xB400], -0.25F);
    EXPECT_EQ(values[0x7BFF], 65504.0F);
    EXPECT_TRUE(std::isinf(values[0x7C00]));
    EXPECT_TRUE(std::isnan(values[0x7E00]));
}

TEST(CodeTables, WholeNumbersAreSharesOfTheHighestWithTheCurveTakenOff) {
    for (const unsigned highest : {255U, 1023U, 65535U}) {
        for (const char* name : {"linear", "srgb", "cineon"}) {
            const LUT& curve = *LUT::find(name);
            const CodeTable& sut = wholeNumbers(highest, curve);
            ASSERT_EQ(sut.size(), highest + 1);
            for (unsigned code = 0; code <= highest; ++code) {
                const double value = static_cast<double>(code) / highest;
                const double linear = curve.toLinear(value);
                ASSERT_NEAR(sut.linear()[code], linear, 2e-6 * std::max(1.0, linear)) << name << " " << code;
                ASSERT_NEAR(sut.stored(curve)[code], value, 2e-6) << name << " " << code;
            }
        }
    }
}

TEST(CodeTables, AreMadeOnceForAllThreads) {
    std::vector<const float*> stored(8);
    std::vector<std::thread> threads;
    for (const float*& found : stored) {
        threads.emplace_back([&found] {
            const CodeTable& table = wholeNumbers(4095, *LUT::find("rec709"));
            found = table.stored(*LUT::find("srgb"));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const float* const found : stored) {
        EXPECT_EQ(found, stored[0]);
    }
    EXPECT_NE(&wholeNumbers(4095, *LUT::find("rec709")), &wholeNumbers(4095, *LUT::find("srgb")));
}

}  // namespace
}  // namespace Corvel
