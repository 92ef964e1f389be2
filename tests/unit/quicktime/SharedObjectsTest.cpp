#include "quicktime/SharedObjects.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Morvane::QuickTime::bridgeNameOf;

const std::string lower = "0123456789abcdef0123456789abcdef";
const std::string upper = "0123456789ABCDEF0123456789ABCDEF";

TEST(BridgeNameOfAPath, IsThatOfBothFiles) {
    EXPECT_EQ(bridgeNameOf("/tmp/processbridge/" + lower), lower);
    EXPECT_EQ(bridgeNameOf("/tmp/processbridge/" + lower + "T"), lower);
    EXPECT_EQ(bridgeNameOf("/dev/shm/a/processbridge/b/processbridge/" + lower), lower);
}

// Systems differ in how they write a UUID.
TEST(BridgeNameOfAPath, MayHaveCapitalDigits) {
    EXPECT_EQ(bridgeNameOf("/tmp/processbridge/" + upper), upper);
    EXPECT_EQ(bridgeNameOf("/tmp/processbridge/" + upper + "T"), upper);
}

TEST(BridgeNameOfAPath, IsEmptyForAnyOtherPath) {
    for (const std::string& path : {std::string(), "/tmp/" + lower, "/tmp/processbridge/" + lower.substr(1),
                                    "/tmp/processbridge/" + lower + "TT", "/tmp/processbridge/" + lower + "0",
                                    "/tmp/processbridge/g" + lower.substr(1), "/tmp/processbridge/a/" + lower,
                                    std::string("/tmp/processbridge/")}) {
        EXPECT_EQ(bridgeNameOf(path), "") << path;
    }
}

}  // namespace
