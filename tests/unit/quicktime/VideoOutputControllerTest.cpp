#include <gtest/gtest.h>

#include <cstring>

#include "property/FieldEncoding.h"
#include "quicktime/QuickTimeVideoOutputIPCController.h"
#include "tests/unit/quicktime/ControllerFixture.h"

namespace {

using namespace Morvane::QuickTime;
using Morvane::Property::joinFields;
using Morvane::Testing::Recording;
using Morvane::Testing::Texts;
using Modes = std::vector<VideoOutputMode>;
using Devices = std::vector<VideoOutputDevice>;

VideoOutputHandle handleOf(std::uintptr_t number) {
    return reinterpret_cast<VideoOutputHandle>(number);
}

using VideoOutputController =
    Morvane::Testing::ControllerFixture<QuickTimeVideoOutputIPCController, createVideoOutputController>;

TEST_F(VideoOutputController, StartsItsWorkerInVideoOutputMode) {
    EXPECT_EQ(sut->sharedData(), nullptr);
    sut->closeOutput();

    ASSERT_EQ(recording.arguments().size(), 3u);
    EXPECT_EQ(recording.arguments()[2], "videooutput");
    EXPECT_EQ(sent(), Texts{"V00000003"});
}

TEST_F(VideoOutputController, OpensADeviceWhenItIsMadeForOne) {
    sut.reset();
    sut.reset(createVideoOutputController(handleOf(0x1f), R"(Screen: "main" \)"));

    EXPECT_EQ(sent(), Texts{R"(V00000000:0x1f:"Screen: \"main\" \\")"});
}

TEST_F(VideoOutputController, WritesANullHandleAsTheLibraryDoes) {
    sut.reset();
    sut.reset(createVideoOutputController(nullptr, ""));

    EXPECT_EQ(sent(), Texts{"V00000000:0:"});
}

TEST_F(VideoOutputController, SelectsAMode) {
    recording.answer("V00000002", "-50");

    EXPECT_EQ(sut->selectMode({1920, 1080, "the name stays here", 23976}, 1), -50);

    EXPECT_EQ(sent(), Texts{"V00000002:1920:1080:23976:1"});
}

TEST_F(VideoOutputController, AsksForEachValueUntilItIsKnown) {
    recording.answer("V00000005", "-1", 1);
    for (const char* head : {"V00000005", "V00000006", "V00000007", "V00000008"}) {
        recording.answer(head, head + 8);
    }

    EXPECT_EQ(sut->queryValue5(), -1);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(sut->queryValue5(), 5);
        EXPECT_EQ(sut->queryValue6(), 6);
        EXPECT_EQ(sut->queryValue7(), 7);
        EXPECT_EQ(sut->queryValue8(), 8);
    }

    EXPECT_EQ(sent(), (Texts{"V00000005", "V00000005", "V00000006", "V00000007", "V00000008"}));
}

TEST_F(VideoOutputController, AsksForTheFrameSizeUntilItIsKnown) {
    recording.answer("V00000009", "0", 1);
    recording.answer("V00000009", "10000000000", 2);

    EXPECT_EQ(sut->getFrameSize(), 0u);
    EXPECT_EQ(sut->getFrameSize(), 10000000000u);
    EXPECT_EQ(sut->getFrameSize(), 10000000000u);

    EXPECT_EQ(sent(), (Texts{"V00000009", "V00000009"}));
}

// Deliberate: value 8 stays known.
TEST_F(VideoOutputController, ForgetsAllButValue8WhenItIsClosed) {
    recording.answer("V00000009", "64");
    for (const char* head : {"V00000005", "V00000006", "V00000007", "V00000008"}) {
        recording.answer(head, "1");
    }
    const auto askAll = [&] {
        sut->queryValue5();
        sut->queryValue6();
        sut->queryValue7();
        sut->queryValue8();
        sut->getFrameSize();
    };
    askAll();

    EXPECT_EQ(sut->closeOutput(), -1);
    sent();
    askAll();

    EXPECT_EQ(sent(), (Texts{"V00000005", "V00000006", "V00000007", "V00000009"}));
}

TEST_F(VideoOutputController, CopiesAFrameOfTheSizeThatTheWorkerSays) {
    recording.answer("V00000009", "8");
    recording.answer("V00000004", "-8960", 2);

    EXPECT_EQ(sut->sendFrame("12345678 and more"), 0);
    EXPECT_EQ(lastPayload(), "12345678");
    EXPECT_EQ(sut->sendFrame("abcdefgh"), -8960);
    EXPECT_EQ(lastPayload(), "abcdefgh");

    EXPECT_EQ(sent(), (Texts{"V00000009", "V00000004", "V00000004"}));
}

TEST_F(VideoOutputController, CopiesNothingWithoutAFrameSize) {
    EXPECT_EQ(sut->sendFrame(nullptr), 0);

    EXPECT_EQ(sent(), (Texts{"V00000009", "V00000004"}));
}

TEST_F(VideoOutputController, FailsAFrameOfASizeThatNoMemoryHas) {
    recording.answer("V00000009", "5000000000000000000");
    testing::internal::CaptureStderr();

    EXPECT_EQ(sut->sendFrame("x"), -108);

    testing::internal::GetCapturedStderr();
    EXPECT_EQ(sent(), Texts{"V00000009"});
}

/// A controller that knows the size of its frames.
class FixedSize : public QuickTimeVideoOutputIPCController {
public:
    FixedSize() : QuickTimeVideoOutputIPCController("0123456789abcdef" + std::to_string(getpid())) {}
    std::uint64_t getFrameSize() override { return 4; }
};

TEST_F(VideoOutputController, AsksASubclassForTheFrameSize) {
    sut = std::make_unique<FixedSize>();

    sut->sendFrame("12345678");

    EXPECT_EQ(sent(), Texts{"V00000004"});
    EXPECT_EQ(lastPayload(), "1234");
}

/// The list of modes as the worker writes it: each mode is a list itself, escaped as a field.
std::string modesText(const std::vector<std::vector<std::string>>& modes) {
    Texts entries;
    for (const auto& mode : modes) {
        entries.push_back(joinFields(mode));
    }
    return joinFields(entries);
}

Modes modesOf(QuickTimeVideoOutputIPCController& controller, std::uintptr_t device) {
    Modes modes{{1, 2, "stale", 3}};
    controller.getModes(handleOf(device), modes);
    return modes;
}

// The tables of devices and modes live as long as the process: each test below has devices of its own.

TEST_F(VideoOutputController, ReadsTheModesOfADevice) {
    recording.answer("V0000000a", modesText({{"1920", "1080", "25000", R"(1920 x 1080: "25" \)"},
                                             {"720", "576", "50000", "PAL"}}));

    const Modes modes = modesOf(*sut, 0x10);

    EXPECT_EQ(modes, (Modes{{1920, 1080, R"(1920 x 1080: "25" \)", 25000}, {720, 576, "PAL", 50000}}));
    EXPECT_EQ(sent(), Texts{"V0000000a:0x10"});
}

TEST_F(VideoOutputController, AsksForTheModesOfADeviceOnceAProcess) {
    recording.answer("V0000000a", modesText({{"1", "2", "3", "mode"}}), 1);
    modesOf(*sut, 0x20);
    sut.reset();
    sut.reset(createVideoOutputController());

    EXPECT_EQ(modesOf(*sut, 0x20), (Modes{{1, 2, "mode", 3}}));
    modesOf(*sut, 0x21);

    EXPECT_EQ(sent(), (Texts{"V0000000a:0x20", "V0000000a:0x21"}));
}

TEST_F(VideoOutputController, AsksForModesAgainAfterAnError) {
    recording.answer("V0000000a", "Error: -43", 1);
    recording.answer("V0000000a", modesText({{"1", "2", "3", "mode"}}), 2);
    recording.answer("V00000002", "unreadable");

    EXPECT_EQ(modesOf(*sut, 0x30), (Modes{{1, 2, "stale", 3}}));
    EXPECT_EQ(sut->selectMode({}, 0), -43);
    EXPECT_EQ(modesOf(*sut, 0x30), (Modes{{1, 2, "mode", 3}}));
}

TEST_F(VideoOutputController, KnowsADeviceWithoutModes) {
    recording.answer("V0000000a", "");

    EXPECT_EQ(modesOf(*sut, 0x40), Modes{});
    EXPECT_EQ(modesOf(*sut, 0x40), Modes{});

    EXPECT_EQ(sent(), Texts{"V0000000a:0x40"});
}

TEST_F(VideoOutputController, StopsReadingModesAtAnEmptyEntry) {
    recording.answer("V0000000a", modesText({{"1", "2", "3", "a"}, {}, {"4", "5", "6", "b"}}));

    EXPECT_EQ(modesOf(*sut, 0x50), (Modes{{1, 2, "a", 3}}));
}

TEST_F(VideoOutputController, DropsAModeWithTooFewFields) {
    recording.answer("V0000000a", modesText({{"1", "2", "3"}, {"4", "5", "6", "b"}}));
    testing::internal::CaptureStderr();

    EXPECT_EQ(modesOf(*sut, 0x60), (Modes{{4, 5, "b", 6}}));

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Video output mode dropped, it has fewer than four fields: 1:2:3\n");
}

void askTwoControllersForDevices() {
    const Recording recording;
    recording.answer("V0000000b", joinFields({R"(Screen: "1" \)", "0x7f0000000001", "Network", "2", "odd"}));
    const Devices expected{{R"(Screen: "1" \)", handleOf(0x7f0000000001)}, {"Network", handleOf(2)}};
    Devices devices{{"stale", nullptr}};

    {
        const std::unique_ptr<QuickTimeVideoOutputIPCController> first(createVideoOutputController());
        first->getDevices(devices);
        EXPECT_EQ(devices, expected);
    }
    const std::unique_ptr<QuickTimeVideoOutputIPCController> second(createVideoOutputController());
    devices.clear();
    second->getDevices(devices);
    EXPECT_EQ(devices, expected);
    EXPECT_EQ(recording.requests(), Texts{"V0000000b"});
}

TEST(VideoOutputDevicesDeathTest, AreAskedForOnceAProcess) {
    IN_FRESH_PROCESS(askTwoControllersForDevices);
}

void answerNoDevices() {
    const Recording recording;
    recording.answer("V0000000b", "");
    const std::unique_ptr<QuickTimeVideoOutputIPCController> sut(createVideoOutputController());
    Devices devices{{"stale", nullptr}};

    sut->getDevices(devices);
    EXPECT_EQ(devices, Devices{});
    sut->getDevices(devices);
    EXPECT_EQ(recording.requests(), (Texts{"V0000000b", "V0000000b"}));
}

TEST(VideoOutputDevicesDeathTest, AreAskedForAgainWhileThereAreNone) {
    IN_FRESH_PROCESS(answerNoDevices);
}

}  // namespace
