#include "worker/output/Presenter.h"

#include <gtest/gtest.h>

#include <future>

#include "FakePort.h"
#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

using std::chrono_literals::operator""ms;
using Shown = FakePortControl::Shown;

// No test is decided by how fast the machine is: where a frame must not be late nothing ever is, where it
// must be late the test has waited for it, and where something must not happen it cannot happen for an hour.
constexpr OutputMode::Rate fast{1000, 1};
constexpr OutputMode::Rate oneInAnHour{1, 3600};
constexpr Presenter::Patience showAll{0ms, 0ms};
constexpr Presenter::Patience dropLate{0ms, std::chrono::hours(1)};
constexpr Presenter::Patience waitForFullQueue{std::chrono::hours(1), 0ms};

constexpr int queueLength = 5;

class PresenterTest : public testing::Test {
protected:
    Presenter::OpenPort open() {
        return [this] { return std::make_unique<FakePort>(control); };
    }

    static Presenter::Outcome submit(Presenter& sut, int value) {
        const float pixel[4] = {static_cast<float>(value), 0, 0, 1};
        return sut.submit(pixel);
    }

    void TearDown() override { EXPECT_EQ(control.alive, 0); }

    FakePortControl control;
};

TEST_F(PresenterTest, ShowsEveryFrameInOrderAndCountsThem) {
    Presenter sut(fast, open(), showAll);

    for (int frame = 0; frame < 20; ++frame)
        EXPECT_EQ(submit(sut, frame + 100), Presenter::Outcome::Taken);
    sut.finish();

    const auto shown = control.allShown();
    ASSERT_EQ(shown.size(), 20U);
    for (int frame = 0; frame < 20; ++frame)
        EXPECT_EQ(shown[static_cast<std::size_t>(frame)],
                  (Shown{frame, static_cast<std::uint8_t>(frame + 100)}));
    EXPECT_EQ(sut.counts().shown, 20);
    EXPECT_EQ(sut.counts().dropped, 0);
}

TEST_F(PresenterTest, OpensShowsAndClosesThePortOnOneThreadOfItsOwn) {
    Presenter sut(fast, open(), showAll);
    submit(sut, 1);
    sut.finish();

    EXPECT_NE(control.openedOn, std::this_thread::get_id());
    EXPECT_EQ(control.openedOn, control.destroyedOn);
    EXPECT_EQ(control.finished, 1);
}

TEST_F(PresenterTest, AFailureToOpenComesOutOfTheConstructor) {
    const Presenter::OpenPort failing = []() -> std::unique_ptr<OutputPort> {
        throw StatusError(Status::InputOutput, "no such window");
    };

    EXPECT_THROW(Presenter(fast, failing), StatusError);
}

TEST_F(PresenterTest, FinishWithoutAFrameCloses) {
    Presenter sut(fast, open());

    sut.finish();

    EXPECT_EQ(sut.counts().shown, 0);
    EXPECT_EQ(control.finished, 1);
}

TEST_F(PresenterTest, ConvertsTheNextFrameWhileOneIsBeingShown) {
    control.holdShow();
    Presenter sut(fast, open(), showAll);
    submit(sut, 1);
    control.awaitShows(1);

    EXPECT_EQ(submit(sut, 2), Presenter::Outcome::Taken);

    control.letShow();
    sut.finish();
    EXPECT_EQ(sut.counts().shown, 2);
}

TEST_F(PresenterTest, TheSenderWaitsWhileTheQueueIsFull) {
    control.holdShow();
    Presenter sut(fast, open(), showAll);
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    control.awaitShows(1);

    auto next = std::async(std::launch::async, [&] { return submit(sut, queueLength); });

    EXPECT_EQ(next.wait_for(100ms), std::future_status::timeout);
    control.letShow();
    EXPECT_EQ(next.get(), Presenter::Outcome::Taken);
    sut.finish();
    EXPECT_EQ(sut.counts().shown, queueLength + 1);
}

TEST_F(PresenterTest, TheClockStartsWithAFullQueue) {
    Presenter sut(oneInAnHour, open(), waitForFullQueue);
    for (int frame = 0; frame < queueLength - 1; ++frame)
        submit(sut, frame);
    std::this_thread::sleep_for(50ms);
    EXPECT_TRUE(control.allShown().empty());

    submit(sut, queueLength - 1);

    control.awaitShows(1);
    EXPECT_EQ(control.allShown().size(), 1U);
}

TEST_F(PresenterTest, ALoneFrameIsShownWithoutOthers) {
    Presenter sut(oneInAnHour, open(), showAll);

    submit(sut, 3);

    control.awaitShows(1);
    EXPECT_EQ(control.allShown().front(), (Shown{0, 3}));
}

TEST_F(PresenterTest, AFrameIsNotShownBeforeItsTime) {
    Presenter sut(oneInAnHour, open(), showAll);
    submit(sut, 0);
    control.awaitShows(1);

    submit(sut, 1);

    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(control.allShown().size(), 1U);
}

TEST_F(PresenterTest, TheNextFrameIsPreparedAheadOfItsTimeAndNoOtherOne) {
    Presenter sut(oneInAnHour, open(), showAll);
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    control.awaitShows(1);

    control.awaitPrepared(2);

    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(control.allPrepared(), (std::vector<std::int64_t>{0, 1}));
    EXPECT_EQ(control.allShown().size(), 1U);
}

TEST_F(PresenterTest, QueuedFramesWhoseTimeIsOverAreDroppedAndCounted) {
    control.holdShow();
    Presenter sut(fast, open(), dropLate);
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    control.awaitShows(1);
    std::this_thread::sleep_for(20ms);  // at 1000 frames a second the time of all five is over

    control.letShow();
    sut.finish();

    EXPECT_EQ(control.allShown(), (std::vector<Shown>{{0, 0}}));
    EXPECT_EQ(sut.counts().shown, 1);
    EXPECT_EQ(sut.counts().dropped, queueLength - 1);
}

TEST_F(PresenterTest, ASenderThatFellBehindCatchesUpWithoutWaiting) {
    Presenter sut(fast, open(), dropLate);
    submit(sut, 0);
    control.awaitShows(1);
    control.holdShow();
    std::this_thread::sleep_for(100ms);

    for (int frame = 1; frame < 50; ++frame)
        EXPECT_EQ(submit(sut, frame), Presenter::Outcome::Taken);

    EXPECT_EQ(sut.counts().dropped, 49);
    control.letShow();
}

TEST_F(PresenterTest, LateFramesAreShownWhenNothingElseHasBeenForLong) {
    Presenter sut(fast, open(), showAll);
    submit(sut, 0);
    control.awaitShows(1);
    std::this_thread::sleep_for(20ms);

    submit(sut, 1);

    control.awaitShows(2);
    sut.finish();
    EXPECT_EQ(sut.counts().dropped, 0);
}

TEST_F(PresenterTest, APauseHoldsTheClockAndTheSender) {
    control.press(PortEvent::TogglePause);
    Presenter sut(fast, open(), dropLate);
    control.awaitNoEvents();
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    auto next = std::async(std::launch::async, [&] { return submit(sut, queueLength); });
    EXPECT_EQ(next.wait_for(100ms), std::future_status::timeout);
    EXPECT_TRUE(control.allShown().empty());

    control.press(PortEvent::TogglePause);

    EXPECT_EQ(next.get(), Presenter::Outcome::Taken);
    control.awaitShows(1);
}

TEST_F(PresenterTest, NothingBecomesLateDuringAPause) {
    Presenter sut(oneInAnHour, open(), dropLate);
    submit(sut, 0);
    control.awaitShows(1);
    control.press(PortEvent::TogglePause);
    control.awaitNoEvents();
    submit(sut, 1);

    // Going on starts the clock anew with the next frame, which otherwise would be due in an hour.
    control.press(PortEvent::TogglePause);

    control.awaitShows(2);
    EXPECT_EQ(sut.counts().dropped, 0);
}

TEST_F(PresenterTest, AStepPausesAndShowsOneFrame) {
    Presenter sut(oneInAnHour, open(), dropLate);
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    control.awaitShows(1);

    control.press(PortEvent::Step);
    control.awaitShows(2);
    control.press(PortEvent::Step);
    control.awaitShows(3);

    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(control.allShown(), (std::vector<Shown>{{0, 0}, {1, 1}, {2, 2}}));
}

TEST_F(PresenterTest, EveryStepCounts) {
    Presenter sut(oneInAnHour, open(), dropLate);
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    control.awaitShows(1);

    for (int times = 0; times < 3; ++times)
        control.press(PortEvent::Step);

    control.awaitShows(4);
}

TEST_F(PresenterTest, FinishWaitsForTheEndOfAPause) {
    control.press(PortEvent::TogglePause);
    Presenter sut(fast, open(), showAll);
    control.awaitNoEvents();
    submit(sut, 0);
    auto finishing = std::async(std::launch::async, [&] { sut.finish(); });
    EXPECT_EQ(finishing.wait_for(100ms), std::future_status::timeout);

    control.press(PortEvent::TogglePause);

    finishing.get();
    EXPECT_EQ(sut.counts().shown, 1);
}

TEST_F(PresenterTest, AClosedDeviceTakesNoMore) {
    Presenter sut(oneInAnHour, open(), showAll);
    submit(sut, 0);
    control.awaitShows(1);

    control.press(PortEvent::Close);
    Presenter::Outcome outcome = Presenter::Outcome::Taken;
    while (outcome == Presenter::Outcome::Taken)
        outcome = submit(sut, 1);

    EXPECT_EQ(submit(sut, 2), Presenter::Outcome::Closed);
    sut.finish();
    EXPECT_EQ(control.finished, 0);
}

TEST_F(PresenterTest, ClosingDuringAPauseFreesTheSender) {
    control.press(PortEvent::TogglePause);
    Presenter sut(fast, open(), showAll);
    control.awaitNoEvents();
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    auto next = std::async(std::launch::async, [&] { return submit(sut, queueLength); });

    control.press(PortEvent::Close);

    EXPECT_EQ(next.get(), Presenter::Outcome::Closed);
}

TEST_F(PresenterTest, ADeviceThatDisappearsFailsEveryFurtherFrame) {
    control.failShow(std::make_exception_ptr(StatusError(Status::InputOutput, "unplugged")));
    Presenter sut(fast, open(), showAll);

    EXPECT_THROW(
        {
            for (;;)
                submit(sut, 0);
        },
        StatusError);

    EXPECT_THROW(submit(sut, 1), StatusError);
    EXPECT_NO_THROW(sut.finish());  // the sender knows already
}

TEST_F(PresenterTest, AFailureThatNoFrameMetComesOutOfFinish) {
    control.failShow(std::make_exception_ptr(StatusError(Status::InputOutput, "unplugged")));
    Presenter sut(fast, open(), showAll);
    submit(sut, 0);

    EXPECT_THROW(sut.finish(), StatusError);
}

TEST_F(PresenterTest, AbandonFreesASenderThatWaits) {
    control.press(PortEvent::TogglePause);
    Presenter sut(fast, open(), showAll);
    control.awaitNoEvents();
    for (int frame = 0; frame < queueLength; ++frame)
        submit(sut, frame);
    auto next = std::async(std::launch::async, [&] { return submit(sut, queueLength); });

    sut.abandon();

    EXPECT_THROW(next.get(), StatusError);
}

TEST_F(PresenterTest, DestructionGivesUpWhatIsQueued) {
    {
        Presenter sut(oneInAnHour, open(), showAll);
        submit(sut, 0);
        control.awaitShows(1);
        submit(sut, 1);
    }

    EXPECT_EQ(control.allShown().size(), 1U);
    EXPECT_EQ(control.finished, 0);
}

}  // namespace
}  // namespace Morvane::Worker
