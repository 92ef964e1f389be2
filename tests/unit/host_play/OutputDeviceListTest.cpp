#include "host/play/OutputDeviceList.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace Corvel {
namespace {

using Morvane::QuickTime::VideoOutputDevice;
using Morvane::QuickTime::VideoOutputHandle;
using Morvane::QuickTime::VideoOutputMode;

/// A video output that only has lists.
class ListedOutputs : public Morvane::QuickTime::QuickTimeVideoOutputInterface {
public:
    std::int32_t selectMode(const VideoOutputMode&, std::int32_t) override { return -50; }
    std::int32_t closeOutput() override { return -1; }
    std::int32_t sendFrame(const char*) override { return -50; }
    std::int32_t queryValue5() override { return -1; }
    std::int32_t queryValue6() override { return -1; }
    std::int32_t queryValue7() override { return -1; }
    std::int32_t queryValue8() override { return -1; }
    std::uint64_t getFrameSize() override { return 0; }
    void getModes(VideoOutputHandle device, std::vector<VideoOutputMode>& modes) override {
        if (device == devices[0].handle) {
            modes = {{640, 480, "640 x 480, 29.97", 29970},
                     {640, 480, "640 x 480, 30", 30000},
                     {1920, 1080, "1920 x 1080, 25", 25000}};
        }
    }
    void getDevices(std::vector<VideoOutputDevice>& list) override { list = devices; }

    std::vector<VideoOutputDevice> devices{{"One", reinterpret_cast<VideoOutputHandle>(1)},
                                           {"Two: \"odd\\\"", reinterpret_cast<VideoOutputHandle>(2)}};
};

TEST(OutputDeviceList, EachDeviceHasItsModes) {
    ListedOutputs outputs;

    const auto list = listOutputDevices(outputs);

    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, "One");
    EXPECT_EQ(list[0].number(), 1U);
    EXPECT_EQ(list[0].modes.size(), 3U);
    EXPECT_TRUE(list[1].modes.empty());
}

TEST(OutputDeviceList, TheTableHasALineForEachSize) {
    ListedOutputs outputs;

    EXPECT_EQ(deviceTable(listOutputDevices(outputs)),
              "1  One\n"
              "     640 x 480   at 29.97, 30\n"
              "     1920 x 1080 at 25\n"
              "2  Two: \"odd\\\"\n");
}

TEST(OutputDeviceList, TheJsonDocumentHasHandlesAndRatesAsNumbers) {
    ListedOutputs outputs;

    const auto document = nlohmann::json::parse(deviceJson(listOutputDevices(outputs)));

    ASSERT_EQ(document.size(), 2U);
    EXPECT_EQ(document[0]["name"], "One");
    EXPECT_EQ(document[0]["handle"], 1);
    EXPECT_EQ(
        document[0]["modes"][0],
        (nlohmann::json{{"width", 640}, {"height", 480}, {"rate", 29.97}, {"name", "640 x 480, 29.97"}}));
    EXPECT_EQ(document[1]["name"], "Two: \"odd\\\"");
    EXPECT_EQ(document[1]["modes"], nlohmann::json::array());
}

TEST(OutputDeviceList, NoDeviceIsAnEmptyList) {
    EXPECT_EQ(deviceTable({}), "");
    EXPECT_EQ(deviceJson({}), "[]\n");
}

TEST(OutputDeviceList, BytesThatAreNoTextDoNotStopTheDocument) {
    const auto document = nlohmann::json::parse(deviceJson({{"Screen \xff", nullptr, {}}}));

    EXPECT_EQ(document[0]["name"], "Screen \xef\xbf\xbd");
}

}  // namespace
}  // namespace Corvel
