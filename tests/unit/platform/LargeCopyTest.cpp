#include "platform/LargeCopy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace {

using Morvane::Platform::copyLarge;
using Morvane::Platform::largerThanCaches;

TEST(LargeCopy, CopiesEveryByteAndNoOtherFromAndToAnyPlace) {
    constexpr std::size_t room = largerThanCaches + 1000;
    std::mt19937 random(1);
    std::vector<unsigned char> source(room);
    for (unsigned char& byte : source) {
        byte = static_cast<unsigned char>(random());
    }
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, std::size_t{100}, largerThanCaches - 1,
                                    largerThanCaches, largerThanCaches + 63, largerThanCaches + 321}) {
        for (const std::size_t from : {0, 1, 16}) {
            for (const std::size_t to : {0, 1, 16, 63}) {
                std::vector<unsigned char> target(room, 0x55);
                std::vector<unsigned char> expected = target;
                std::copy_n(source.begin() + static_cast<std::ptrdiff_t>(from), bytes,
                            expected.begin() + static_cast<std::ptrdiff_t>(to));

                copyLarge(target.data() + to, source.data() + from, bytes);

                EXPECT_TRUE(target == expected) << bytes << " bytes from " << from << " to " << to;
            }
        }
    }
}

}  // namespace
