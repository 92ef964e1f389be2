#include "quicktime/VideoOutputTask.h"

#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>

namespace {

using Morvane::QuickTime::VideoOutputTask;

std::string errorOf(const std::string& text) {
    try {
        VideoOutputTask{text};
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(VideoOutputTask, HoldsDeviceAndNameOfAnOpeningRequest) {
    const VideoOutputTask sut(R"(V00000000:0x1f:"Screen: \"main\"")");

    EXPECT_EQ(sut.opcode, 0);
    EXPECT_EQ(sut.device, reinterpret_cast<void*>(0x1f));
    EXPECT_EQ(sut.deviceName, R"(Screen: "main")");
}

TEST(VideoOutputTask, HoldsTheFourNumbersOfSelectMode) {
    const VideoOutputTask sut("V00000002:1920:1080:23976:1");

    EXPECT_EQ(sut.width, 1920);
    EXPECT_EQ(sut.height, 1080);
    EXPECT_EQ(sut.rate, 23976);
    EXPECT_EQ(sut.display, 1);
}

TEST(VideoOutputTask, HoldsTheDeviceOfGetModes) {
    EXPECT_EQ(VideoOutputTask("V0000000a:0x7f0012345678").device, reinterpret_cast<void*>(0x7f0012345678));
    EXPECT_EQ(VideoOutputTask("V0000000a:0").device, nullptr);
}

TEST(VideoOutputTask, HoldsOnlyTheOpcodeOfOtherRequests) {
    EXPECT_EQ(VideoOutputTask("V00000004").opcode, 4);
    EXPECT_EQ(VideoOutputTask("V0000000b").opcode, 11);
    EXPECT_EQ(VideoOutputTask("V0000ffff").opcode, 0xffff);
}

TEST(VideoOutputTask, IsRefusedForATextOfAnotherKind) {
    EXPECT_EQ(errorOf(""), "Not a video output task.");
    EXPECT_EQ(errorOf("W00000002"), "Not a video output task.");
}

TEST(VideoOutputTask, IsRefusedWhenArgumentsAreMissing) {
    EXPECT_EQ(errorOf("V0000000a"), "Request V0000000a has no argument 1, getModes: device.");
    EXPECT_EQ(errorOf("V00000000:0x1"), "Request V00000000 has no argument 2, open: name.");
    EXPECT_EQ(errorOf("V00000002:1:2:3"), "Request V00000002 has no argument 4, selectMode: display.");
}

TEST(VideoOutputTask, IsRefusedForAMalformedEscape) {
    EXPECT_THROW(VideoOutputTask(R"(V0000000a:\x)"), boost::escaped_list_error);
}

}  // namespace
