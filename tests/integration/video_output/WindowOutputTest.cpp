#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

#include <future>
#include <optional>

#include "OutputWorker.h"
#include "VirtualDisplay.h"
#include "worker/Status.h"

namespace Morvane::Testing {
namespace {

using testing::HasSubstr;
using Worker::Status;

constexpr int screenWidth = 1400;
constexpr int screenHeight = 900;

constexpr std::int32_t window = 0;
constexpr std::int32_t fullScreen = 1;

/// Frames that a paused output takes before it lets a sender wait.
constexpr int queueLength = 5;

std::int32_t number(Status status) {
    return static_cast<std::int32_t>(status);
}

class WindowOutput : public testing::Test {
protected:
    void SetUp() override {
        if (const std::string missing = VirtualDisplay::missingPrograms(); !missing.empty())
            GTEST_SKIP() << "not installed: " << missing;
        display.emplace(screenWidth, screenHeight);
    }

    int differenceOf(const TestFrame& frame) {
        return display->differenceOnceShown(frame, (screenWidth - frame.width) / 2,
                                            (screenHeight - frame.height) / 2);
    }

    /// Sends `frame` until the worker answers anything but success.
    static std::int32_t sendUntilRefused(OutputWorker& sut, const TestFrame& frame) {
        std::int32_t status = 0;
        while (status == 0)
            status = sut->sendFrame(frame.bytes());
        return status;
    }

    std::optional<VirtualDisplay> display;
};

TEST_F(WindowOutput, ShowsTheFrameThatWasSentInEverySelectedSize) {
    OutputWorker sut(OutputWorker::display(), "Picture check");
    const TestFrame small = TestFrame::bars(640, 480);
    const TestFrame large = TestFrame::bars(1280, 720);

    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    EXPECT_EQ(sut->getFrameSize(), 640U * 480U * 16U);
    ASSERT_EQ(sut->sendFrame(small.bytes()), 0);
    EXPECT_LE(differenceOf(small), 2);

    sut->closeOutput();
    ASSERT_EQ(sut->selectMode(outputMode(1280, 720, 25), window), 0);
    EXPECT_EQ(sut->getFrameSize(), 1280U * 720U * 16U);
    ASSERT_EQ(sut->sendFrame(large.bytes()), 0);
    EXPECT_LE(differenceOf(large), 2);
}

TEST_F(WindowOutput, TheScreensOwnModeFillsIt) {
    OutputWorker sut(OutputWorker::display(), "Own mode");
    const TestFrame frame = TestFrame::bars(screenWidth, screenHeight);
    std::vector<QuickTime::VideoOutputMode> modes;
    sut->getModes(OutputWorker::display(), modes);
    ASSERT_FALSE(modes.empty());
    ASSERT_EQ(modes.back().width, screenWidth);

    ASSERT_EQ(sut->selectMode(modes.back(), fullScreen), 0);
    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);

    EXPECT_LE(display->differenceOnceShown(frame, 0, 0), 2);
}

TEST_F(WindowOutput, FullScreenKeepsTheAspectWithBlackAround) {
    OutputWorker sut(OutputWorker::display(), "Full screen");
    const TestFrame frame = TestFrame::flat(640, 480, 0.2F, 0.6F, 1.0F);
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), fullScreen), 0);
    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);

    // 4:3 on 1400 x 900 is 1200 x 900, with 100 black columns on either side.
    EXPECT_LE(display->differenceOnceShown(TestFrame::flat(1200, 900, 0.2F, 0.6F, 1.0F), 100, 0), 2);
    const Bytes picture = display->screenshot();
    EXPECT_LE(largestDifference(TestFrame::flat(99, 900, 0, 0, 0), picture, 0, 0), 2);
    EXPECT_LE(largestDifference(TestFrame::flat(99, 900, 0, 0, 0), picture, 1301, 0), 2);
}

TEST_F(WindowOutput, ValuesBeyondTheRangeAreLimited) {
    OutputWorker sut(OutputWorker::display(), "Limits");
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    const TestFrame frame = TestFrame::flat(640, 480, 17.0F, -3.0F, 0.5F);

    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);

    EXPECT_LE(differenceOf(TestFrame::flat(640, 480, 1.0F, 0.0F, 0.5F)), 2);
}

TEST_F(WindowOutput, AWindowThatThePersonClosesIsToldWithItsOwnStatus) {
    OutputWorker sut(OutputWorker::display(), "To be closed");
    const TestFrame frame = TestFrame::bars(640, 480);
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);

    display->closeWindow("To be closed");

    EXPECT_EQ(sendUntilRefused(sut, frame), number(Status::Cancelled));
    EXPECT_EQ(sut->sendFrame(frame.bytes()), number(Status::Cancelled));
    sut->closeOutput();
    EXPECT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
}

TEST_F(WindowOutput, AWindowThatAnotherProgramDestroysCountsAsClosed) {
    OutputWorker sut(OutputWorker::display(), "To be destroyed");
    const TestFrame frame = TestFrame::bars(640, 480);
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);

    display->destroyWindow("To be destroyed");

    EXPECT_EQ(sendUntilRefused(sut, frame), number(Status::Cancelled));
    sut->closeOutput();
    // What the window library keeps of it would be in the way of another one.
    EXPECT_EQ(sut->selectMode(outputMode(640, 480, 25), window), number(Status::InputOutput));
}

TEST_F(WindowOutput, AWindowOfAnotherSizeScalesTheFrame) {
    OutputWorker sut(OutputWorker::display(), "Resized");
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    ASSERT_EQ(sut->sendFrame(TestFrame::flat(640, 480, 1, 0, 0).bytes()), 0);

    display->resizeWindow("Resized", 1000, 480);

    // 4:3 in 1000 x 480 is 640 x 480 again, now with 180 black columns on its left.
    const int left = (screenWidth - 640) / 2;
    const int top = (screenHeight - 480) / 2;
    EXPECT_LE(display->differenceOnceShown(TestFrame::flat(640, 480, 1, 0, 0), left + 180, top), 2);
    EXPECT_LE(largestDifference(TestFrame::flat(180, 480, 0, 0, 0), display->screenshot(), left, top), 2);
}

/// A window that is known to be paused. Input for one window arrives in order: once the window shows its
/// frame in the size that it was given after the key, it has seen the key. From 640 x 480 it becomes 800 x
/// 600.
class PausedWindowOutput : public WindowOutput {
protected:
    void SetUp() override {
        WindowOutput::SetUp();
        if (IsSkipped())
            return;
        sut.emplace(OutputWorker::display(), "Keys");
        ASSERT_EQ((*sut)->selectMode(outputMode(640, 480, 25), window), 0);
        send(1, 0, 0);
        ASSERT_LE(differenceOf(TestFrame::flat(640, 480, 1, 0, 0)), 2);
        display->pressKey("Keys", "space");
        display->resizeWindow("Keys", 800, 600);
        ASSERT_TRUE(shows(1, 0, 0));
    }

    void send(float red, float green, float blue) {
        ASSERT_EQ((*sut)->sendFrame(TestFrame::flat(640, 480, red, green, blue).bytes()), 0);
    }

    bool shows(float red, float green, float blue) {
        return display->differenceOnceShown(TestFrame::flat(800, 600, red, green, blue),
                                            (screenWidth - 640) / 2, (screenHeight - 480) / 2) <= 2;
    }

    std::optional<OutputWorker> sut;
};

TEST_F(PausedWindowOutput, KeysStepAndGoOn) {
    send(0, 1, 0);
    send(0, 0, 1);
    send(1, 1, 0);
    EXPECT_TRUE(shows(1, 0, 0));

    display->pressKey("Keys", "Right");
    EXPECT_TRUE(shows(0, 1, 0));
    display->pressKey("Keys", "period");
    EXPECT_TRUE(shows(0, 0, 1));

    display->pressKey("Keys", "space");
    EXPECT_TRUE(shows(1, 1, 0));
}

TEST_F(PausedWindowOutput, AKeyCloses) {
    display->pressKey("Keys", "q");

    EXPECT_EQ(sendUntilRefused(*sut, TestFrame::bars(640, 480)), number(Status::Cancelled));
}

TEST_F(PausedWindowOutput, TheWorkerEndsWhenItIsToldTo) {
    for (int queued = 0; queued < queueLength; ++queued)
        send(0, 1, 0);
    const std::uint64_t grown = 2 * (*sut)->getFrameSize();
    ASSERT_TRUE((*sut)->resizeSharedData(grown));
    const TestFrame frame = TestFrame::bars(640, 480);
    auto sending = std::async(std::launch::async, [&] { return (*sut)->sendFrame(frame.bytes()); });
    EXPECT_TRUE(sut->hasMapped(grown));

    kill(sut->pid(), SIGTERM);

    EXPECT_EQ(sending.get(), number(Status::BadArgument));
}

TEST_F(WindowOutput, ADisplayThatDisappearsIsAnsweredAndTheWorkerLives) {
    OutputWorker sut(OutputWorker::display(), "Doomed");
    const TestFrame frame = TestFrame::bars(640, 480);
    ASSERT_EQ(sut->selectMode(outputMode(640, 480, 25), window), 0);
    ASSERT_EQ(sut->sendFrame(frame.bytes()), 0);
    ASSERT_LE(differenceOf(frame), 2);

    display->kill();

    EXPECT_EQ(sendUntilRefused(sut, frame), number(Status::InputOutput));
    EXPECT_THAT(sut.standardError(), HasSubstr("the display server has gone (-36)"));
    sut->closeOutput();
    EXPECT_EQ(sut->selectMode(outputMode(640, 480, 25), window), number(Status::InputOutput));
    EXPECT_EQ(sut->sendFrame(frame.bytes()), number(Status::BadArgument));
}

TEST_F(WindowOutput, ASecondControllerOnTheSameDisplayIsRefusedNamingIt) {
    OutputWorker first(OutputWorker::display(), "First");
    ASSERT_EQ(first->selectMode(outputMode(640, 480, 25), window), 0);
    OutputWorker second(OutputWorker::display(), "Second");

    EXPECT_EQ(second->selectMode(outputMode(640, 480, 25), window), number(Status::NoPermission));

    EXPECT_THAT(second.standardError(), HasSubstr("cannot open Display 1"));
    first->closeOutput();
    EXPECT_EQ(second->selectMode(outputMode(640, 480, 25), window), 0);
}

}  // namespace
}  // namespace Morvane::Testing
