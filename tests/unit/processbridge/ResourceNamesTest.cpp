#include "processbridge/ResourceNames.h"

#include <gtest/gtest.h>

namespace {

using Morvane::ProcessBridge::ResourceNames;

// Deliberate: the second prefix replaces part of the first, and digits are lost at the front.
TEST(ResourceNames, ComeFromOneTextThatIsEditedOnAndOn) {
    const ResourceNames sut("0f1e2d3c4b5a69788796a5b4c3d2e1f0");

    EXPECT_EQ(sut.dataFile, "0f1e2d3c4b5a69788796a5b4c3d2e1f0");
    EXPECT_EQ(sut.requestFile, "0f1e2d3c4b5a69788796a5b4c3d2e1f0T");
    EXPECT_EQ(sut.readySemaphore.substr(0, 30), "RDY-e2d3c4b5a69788796a5b4c3d2e");
    EXPECT_EQ(sut.doneSemaphore.substr(0, 30), "DN-Y-e2d3c4b5a69788796a5b4c3d2");
}

TEST(ResourceNames, CanBeFormedFromShortNames) {
    const ResourceNames sut("a");

    EXPECT_EQ(sut.requestFile, "aT");
    EXPECT_EQ(sut.readySemaphore, "RDY-");
    EXPECT_EQ(sut.doneSemaphore, "DN-Y-");
}

}  // namespace
