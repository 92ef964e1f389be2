#include "worker/output/VideoOutputMode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <future>

#include "FakePort.h"
#include "HostEnd.h"
#include "property/FieldEncoding.h"

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;
using testing::Not;

// Frames are only sent in the fast mode: closing waits until the last one has been shown for its whole time.
const OutputMode fastMode{2, 1, {1000, 1}};
const OutputMode slowMode{4, 2, {1, 1000}};
constexpr std::size_t fastPixels = 2;

const std::string oddName = R"(Screen "one\two": left, a:b::c\)";

class FakeDevice : public OutputDevice {
public:
    FakeDevice(std::string label, FakePortControl& control) : label(std::move(label)), control(control) {}

    std::string name() const override { return label; }
    std::vector<OutputMode> modes() const override { return {fastMode, slowMode}; }
    int bitsPerChannel() const override { return 8; }
    std::string lockKey(const std::string& title) const override {
        if (title == "unusable")
            throw StatusError(Status::BadArgument, "cannot use that title");
        return "fake-" + std::to_string(getpid()) + label.substr(0, 3);
    }
    std::unique_ptr<OutputPort> open(const OutputMode& mode, Presentation presentation,
                                     const std::string& title) const override {
        if (title == "broken")
            throw StatusError(Status::InputOutput, "cannot open the broken one");
        opened = {mode.name(), presentation, title};
        return std::make_unique<FakePort>(control);
    }

    struct Opened {
        std::string mode;
        Presentation presentation = Presentation::Window;
        std::string title;
    };
    mutable Opened opened;

private:
    std::string label;
    FakePortControl& control;
};

class VideoOutputModeTest : public testing::Test {
protected:
    FindDevices find() {
        return [this] {
            ++searches;
            auto first = std::make_unique<FakeDevice>("First", control);
            device = first.get();
            std::vector<std::unique_ptr<OutputDevice>> devices;
            devices.push_back(std::move(first));
            devices.push_back(std::make_unique<FakeDevice>(oddName, control));
            return devices;
        };
    }

    std::string sendFrame(std::size_t pixels) { return host.sendFrame(std::vector<float>(pixels * 4, 0.5F)); }

    void TearDown() override {
        host.send("V00000003");
        EXPECT_EQ(control.alive, 0);
    }

    FakePortControl control;
    int searches = 0;
    FakeDevice* device = nullptr;
    VideoOutputMode sut{find()};
    HostEnd host{sut};
};

TEST_F(VideoOutputModeTest, DevicesAreNamesAndHandlesThatAreNeverNull) {
    const auto fields = Property::splitFields(host.send("V0000000b"));

    ASSERT_EQ(fields.size(), 4U);
    EXPECT_EQ(fields[0], "First");
    EXPECT_EQ(fields[1], "0x1");
    EXPECT_EQ(fields[2], oddName);
    EXPECT_EQ(fields[3], "0x2");
}

TEST_F(VideoOutputModeTest, HandlesKeepTheirMeaning) {
    const std::string first = host.send("V0000000b");

    EXPECT_EQ(host.send("V0000000b"), first);
    EXPECT_EQ(searches, 1);
}

TEST_F(VideoOutputModeTest, ModesAreEscapedRecordsInAnEscapedList) {
    const auto entries = Property::splitFields(host.send("V0000000a:0x2"));

    ASSERT_EQ(entries.size(), 2U);
    const auto record = Property::splitFields(entries[1]);
    ASSERT_EQ(record.size(), 4U);
    EXPECT_EQ(record[0], "4");
    EXPECT_EQ(record[1], "2");
    EXPECT_EQ(record[2], "1");
    EXPECT_EQ(record[3], "4 x 2, 0.001");
}

TEST_F(VideoOutputModeTest, ModesOfAnUnknownDeviceAreAnError) {
    EXPECT_EQ(host.send("V0000000a:0x3"), "Error: -50");
    EXPECT_EQ(host.send("V0000000a:0"), "Error: -50");
    EXPECT_EQ(host.send("V0000000a"), "Error: -50");
    EXPECT_EQ(host.send("V0000000a:nonsense"), "Error: -50");
}

TEST_F(VideoOutputModeTest, ShowsFramesInTheSelectedMode) {
    host.send("V00000000:0x1:First");

    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "0");
    EXPECT_EQ(sendFrame(fastPixels), "0");

    control.awaitShows(1);
}

TEST_F(VideoOutputModeTest, TheNameThatItIsOpenedByReachesTheDeviceWhole) {
    host.send("V00000000:0x1:" + Property::escapeField(oddName));
    host.send("V00000002:4:2:1:1");

    EXPECT_EQ(device->opened.title, oddName);
    EXPECT_EQ(device->opened.mode, "4 x 2, 0.001");
    EXPECT_EQ(device->opened.presentation, Presentation::FullScreen);
}

TEST_F(VideoOutputModeTest, QueriesAnswerTheSelectedMode) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:4:2:1:0");

    EXPECT_EQ(host.send("V00000005"), "4");
    EXPECT_EQ(host.send("V00000006"), "2");
    EXPECT_EQ(host.send("V00000007"), "1");
    EXPECT_EQ(host.send("V00000008"), "8");
    EXPECT_EQ(host.send("V00000009"), "128");
}

TEST_F(VideoOutputModeTest, QueriesWithoutAModeLeaveTheHostUnknowing) {
    for (const char* query : {"V00000005", "V00000006", "V00000007", "V00000008"})
        EXPECT_EQ(host.send(query), "-1");
    EXPECT_EQ(host.send("V00000009"), "0");

    host.send("V00000000:0x1:First");
    EXPECT_EQ(host.send("V00000005"), "-1");
    EXPECT_EQ(host.send("V00000008"), "8");  // the device's, whatever the mode
}

TEST_F(VideoOutputModeTest, ClosingForgetsTheMode) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:4:2:1:0");

    host.send("V00000003");

    EXPECT_EQ(host.send("V00000005"), "-1");
    EXPECT_EQ(host.send("V00000009"), "0");
    EXPECT_EQ(sendFrame(8), "-50");
    EXPECT_EQ(host.send("V00000002:4:2:1:0"), "0");
}

TEST_F(VideoOutputModeTest, ClosingShowsWhatIsQueued) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");
    sendFrame(fastPixels);

    host.send("V00000003");

    EXPECT_EQ(control.allShown().size(), 1U);
    EXPECT_EQ(control.finished, 1);
}

TEST_F(VideoOutputModeTest, SelectingAnotherModeReopensTheDevice) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");

    EXPECT_EQ(host.send("V00000002:4:2:1:0"), "0");

    EXPECT_EQ(control.alive, 1);
    EXPECT_EQ(host.send("V00000009"), "128");
}

TEST_F(VideoOutputModeTest, FramesBeforeAModeAreRefused) {
    EXPECT_EQ(sendFrame(fastPixels), "-50");
    host.send("V00000000:0x1:First");
    EXPECT_EQ(sendFrame(fastPixels), "-50");
}

TEST_F(VideoOutputModeTest, AFrameThatIsTooShortIsRefused) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");

    EXPECT_EQ(host.send("V00000004"), "-50");
    EXPECT_EQ(sendFrame(fastPixels), "0");
}

TEST_F(VideoOutputModeTest, AModeThatTheDeviceDoesNotHaveIsRefused) {
    host.send("V00000000:0x1:First");

    EXPECT_EQ(host.send("V00000002:2:1:25000:0"), "-50");
    EXPECT_EQ(host.send("V00000002:3:1:1000000:0"), "-50");
    EXPECT_EQ(host.send("V00000002:-2:-1:0:0"), "-50");
    EXPECT_EQ(host.send("V00000002:2:1:1000000:2"), "-50");
    EXPECT_EQ(host.send("V00000002"), "-50");
}

TEST_F(VideoOutputModeTest, ARefusedModeLeavesTheOldOneSelected) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");

    host.send("V00000002:3:3:1:0");

    EXPECT_EQ(sendFrame(fastPixels), "0");
}

TEST_F(VideoOutputModeTest, AModeBeforeADeviceIsRefused) {
    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "-50");
}

TEST_F(VideoOutputModeTest, AFailedOpenIsAnsweredByTheNextSelection) {
    host.send("V00000000:0x7:Nowhere");
    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "-50");

    host.send("V00000000:0x1:unusable");
    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "-50");

    host.send("V00000000:0x1:First");
    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "0");
}

TEST_F(VideoOutputModeTest, ADeviceThatDoesNotOpenInTheModeIsAnswered) {
    host.send("V00000000:0x1:broken");

    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "-36");
    EXPECT_EQ(sendFrame(fastPixels), "-50");
}

TEST_F(VideoOutputModeTest, ASecondWorkerOnTheSameDeviceIsRefusedNamingIt) {
    VideoOutputMode other(find());
    HostEnd otherHost(other);
    host.send("V00000000:0x1:First");
    otherHost.send("V00000000:0x1:First");

    testing::internal::CaptureStderr();
    EXPECT_EQ(otherHost.send("V00000002:2:1:1000000:0"), "-54");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cannot open First: it is in use"));

    host.send("V00000003");
    EXPECT_EQ(otherHost.send("V00000002:2:1:1000000:0"), "0");
    otherHost.send("V00000003");
}

TEST_F(VideoOutputModeTest, TwoDevicesServeTwoWorkers) {
    VideoOutputMode other(find());
    HostEnd otherHost(other);
    host.send("V00000000:0x1:First");
    otherHost.send("V00000000:0x2:Second");

    EXPECT_EQ(host.send("V00000002:2:1:1000000:0"), "0");
    EXPECT_EQ(otherHost.send("V00000002:2:1:1000000:0"), "0");
    otherHost.send("V00000003");
}

TEST_F(VideoOutputModeTest, AWindowThatThePersonClosedIsNoFailure) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");
    control.press(PortEvent::Close);

    testing::internal::CaptureStderr();
    std::string answer = "0";
    while (answer == "0")
        answer = sendFrame(fastPixels);

    EXPECT_EQ(answer, "-128");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VideoOutputModeTest, ADeviceThatDisappearsIsAnsweredByTheFrames) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");
    control.failShow(std::make_exception_ptr(StatusError(Status::InputOutput, "First is gone")));

    std::string answer = "0";
    while (answer == "0")
        answer = sendFrame(fastPixels);

    EXPECT_EQ(answer, "-36");
    EXPECT_EQ(sendFrame(fastPixels), "-36");
}

TEST_F(VideoOutputModeTest, CountsAreToldAtClose) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");
    sendFrame(fastPixels);

    testing::internal::CaptureStderr();
    host.send("V00000003");

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "CorvelQuickTimeHelper-32: First: 1 frame shown, 0 dropped\n");
}

TEST_F(VideoOutputModeTest, ClosingTwiceTellsNothingMore) {
    host.send("V00000000:0x1:First");
    host.send("V00000002:2:1:1000000:0");
    host.send("V00000003");

    testing::internal::CaptureStderr();
    host.send("V00000003");

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VideoOutputModeTest, TheEndOfTheWorkerInterruptsAPause) {
    host.send("V00000000:0x1:First");
    control.press(PortEvent::TogglePause);
    host.send("V00000002:2:1:1000000:0");
    control.awaitNoEvents();

    auto sending = std::async(std::launch::async, [this] {
        std::string answer = "0";
        while (answer == "0")
            answer = sendFrame(fastPixels);
        return answer;
    });
    sut.interrupt();

    EXPECT_EQ(sending.get(), "-50");
}

TEST_F(VideoOutputModeTest, UnknownRequestsAreAnswered) {
    EXPECT_EQ(host.send("V00000001"), "Error: -50");
    EXPECT_EQ(host.send("V000000ff"), "Error: -50");
    EXPECT_EQ(host.send("V"), "Error: -50");
    EXPECT_EQ(host.send(""), "Error: -50");
    EXPECT_EQ(host.send("W0000000b"), "Error: -50");
    EXPECT_EQ(host.send("V0000000a:a\\q"), "Error: -50");
}

}  // namespace
}  // namespace Morvane::Worker
