#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "OutputWorker.h"
#include "Program.h"
#include "Receiver.h"
#include "TestFrame.h"

namespace Morvane::Testing {
namespace {

using testing::HasSubstr;

class NetworkOutput : public testing::Test {
protected:
    void SetUp() override {
        if (!hasProgram("ffmpeg"))
            GTEST_SKIP() << "not installed: ffmpeg";
    }

    std::string url() const { return receiverUrl(port); }

    std::string device() const { return "Network 127.0.0.1:" + std::to_string(port); }

    static void send(OutputWorker& sut, const TestFrame& frame, int count) {
        for (int sent = 0; sent < count; ++sent)
            ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);
        sut->closeOutput();
    }

    const int port = freePort();
};

TEST_F(NetworkOutput, ArrivesWithItsColours) {
    const TestFrame frame = TestFrame::bars(1280, 720);
    OutputWorker sut(OutputWorker::network(), device());
    ASSERT_EQ(sut->selectMode(outputMode(1280, 720, 25), 0), 0);
    Receiver receiver({"ffmpeg", "-v", "error", "-i", url(), "-frames:v", "1", "-sws_flags",
                       "accurate_rnd+full_chroma_int", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"},
                      port);

    send(sut, frame, 40);

    const std::string samples = receiver.output();
    ASSERT_EQ(samples.size(), 1280U * 720U * 3U);
    const Bytes received{1280, 720, {samples.begin(), samples.end()}};
    for (int bar = 0; bar < 8; ++bar) {
        const int x = bar * 160 + 80;
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(received.pixel(x, 180)[channel], frame.pixel(x, 180)[channel] * 255, 2.5) << bar;
    }
    for (int x = 4; x < 1280; x += 8)
        EXPECT_NEAR(received.pixel(x, 450)[1], frame.pixel(x, 450)[1] * 255, 2.5) << x;
}

TEST_F(NetworkOutput, SaysWhatItIs) {
    OutputWorker sut(OutputWorker::network(), device());
    ASSERT_EQ(sut->selectMode(outputMode(1998, 1080, 24000 / 1001.0), 0), 0);
    Receiver receiver({"ffprobe", "-v", "error", "-of", "json", "-show_streams", url()}, port);

    send(sut, TestFrame::bars(1998, 1080), 60);

    const auto streams = nlohmann::json::parse(receiver.output())["streams"];
    ASSERT_EQ(streams.size(), 1U);
    EXPECT_EQ(streams[0]["codec_name"], "h264");
    EXPECT_EQ(streams[0]["width"], 1998);
    EXPECT_EQ(streams[0]["height"], 1080);
    EXPECT_EQ(streams[0]["r_frame_rate"], "24000/1001");
    EXPECT_EQ(streams[0]["pix_fmt"], "yuv420p");
    EXPECT_EQ(streams[0]["color_range"], "tv");
    EXPECT_EQ(streams[0]["color_space"], "bt709");
    EXPECT_EQ(streams[0]["color_primaries"], "bt709");
    EXPECT_EQ(streams[0]["color_transfer"], "bt709");
    EXPECT_EQ(streams[0]["sample_aspect_ratio"], "1:1");
}

TEST_F(NetworkOutput, ADevicesNameOfAnyCharactersGoesThroughWhole) {
    const std::string name = device() + R"( the "big\small": one, ::\\ "")";
    OutputWorker sut(OutputWorker::network(), name);
    ASSERT_EQ(sut->selectMode(outputMode(640, 360, 25), 0), 0);
    Receiver receiver({"ffprobe", "-v", "error", "-of", "json", "-show_programs", url()}, port);

    send(sut, TestFrame::bars(640, 360), 50);

    const auto programs = nlohmann::json::parse(receiver.output())["programs"];
    ASSERT_EQ(programs.size(), 1U);
    EXPECT_EQ(programs[0]["tags"]["service_name"], name);
}

TEST_F(NetworkOutput, EveryFrameArrivesAtItsTime) {
    OutputWorker sut(OutputWorker::network(), device());
    ASSERT_EQ(sut->selectMode(outputMode(640, 360, 50), 0), 0);
    Receiver receiver({"ffprobe", "-v", "error", "-of", "json", "-show_entries", "packet=pts", url()}, port);

    send(sut, TestFrame::bars(640, 360), 50);

    // 90000 ticks a second, 1800 a frame. A frame that a busy machine made late is missing, its time stays
    // free.
    const auto packets = nlohmann::json::parse(receiver.output())["packets"];
    ASSERT_FALSE(packets.empty());
    const std::int64_t first = packets.front()["pts"];
    for (const auto& packet : packets)
        EXPECT_EQ((packet["pts"].get<std::int64_t>() - first) % 1800, 0);
    EXPECT_LE(packets.back()["pts"].get<std::int64_t>() - first, 49 * 1800);
    EXPECT_THAT(sut.standardError(),
                HasSubstr(device() + ": " + std::to_string(packets.size()) + " frames shown"));
}

TEST_F(NetworkOutput, AnAddressThatIsNoneIsAnsweredByTheSelection) {
    OutputWorker sut(OutputWorker::network(), "Network nowhere");

    EXPECT_EQ(sut->selectMode(outputMode(640, 360, 25), 0), -50);

    EXPECT_THAT(sut.standardError(), HasSubstr("\"Network nowhere\""));
}

TEST_F(NetworkOutput, TwoAddressesAreTwoDevices) {
    OutputWorker first(OutputWorker::network(), device());
    OutputWorker second(OutputWorker::network(), "Network 127.0.0.1:" + std::to_string(freePort()));
    OutputWorker third(OutputWorker::network(), device());

    EXPECT_EQ(first->selectMode(outputMode(640, 360, 25), 0), 0);
    EXPECT_EQ(second->selectMode(outputMode(640, 360, 25), 0), 0);
    EXPECT_EQ(third->selectMode(outputMode(640, 360, 25), 0), -54);
    EXPECT_THAT(third.standardError(), HasSubstr("cannot open " + device() + ": it is in use by process"));
}

TEST_F(NetworkOutput, QueriesAndTheirCachesFollowTheMode) {
    OutputWorker sut(OutputWorker::network(), device());
    EXPECT_EQ(sut->queryValue5(), -1);
    EXPECT_EQ(sut->getFrameSize(), 0U);

    ASSERT_EQ(sut->selectMode(outputMode(1920, 1080, 29.97), 0), 0);
    EXPECT_EQ(sut->queryValue5(), 1920);
    EXPECT_EQ(sut->queryValue6(), 1080);
    EXPECT_EQ(sut->queryValue7(), 29970);
    EXPECT_EQ(sut->queryValue8(), 8);
    EXPECT_EQ(sut->getFrameSize(), 1920U * 1080U * 16U);

    EXPECT_EQ(sut->closeOutput(), -1);
    EXPECT_EQ(sut->queryValue8(), 8);
    EXPECT_EQ(sut->queryValue5(), -1);
}

TEST_F(NetworkOutput, AnUnknownDeviceHasNoModesAndDoesNotOpen) {
    const auto unknown = reinterpret_cast<QuickTime::VideoOutputHandle>(0x77);
    OutputWorker sut(unknown, "Nowhere");
    std::vector<QuickTime::VideoOutputMode> modes{outputMode(1, 2, 3)};

    sut->getModes(unknown, modes);

    EXPECT_EQ(modes, (std::vector<QuickTime::VideoOutputMode>{outputMode(1, 2, 3)}));
    EXPECT_EQ(sut->selectMode(outputMode(640, 360, 25), 0), -50);
}

}  // namespace
}  // namespace Morvane::Testing
