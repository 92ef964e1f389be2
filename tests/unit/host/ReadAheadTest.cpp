#include "host/render/ReadAhead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <set>

#include "tests/unit/host/FakeSource.h"

namespace Corvel {
namespace {

std::vector<PlannedFrame> planOf(int count) {
    std::vector<PlannedFrame> plan;
    for (int i = 1; i <= count; ++i) {
        plan.push_back({i, i, i});
    }
    return plan;
}

TEST(ReadAhead, GivesFramesInOrderWhateverThreadReadsThem) {
    const FakeSource source({1});
    ReadAhead sut(source, planOf(200), {4, 9});
    for (int i = 1; i <= 200; ++i) {
        const auto frame = sut.next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->planned.number, i);
        EXPECT_EQ(frame->picture->row(0, 0)[0], static_cast<float>(i));
    }
    EXPECT_FALSE(sut.next());
}

TEST(ReadAhead, AllowsCodesWhereTheTakerDoesAndNoStepNeedsFloats) {
    class Nothing : public PictureStep {
    public:
        explicit Nothing(bool codes) : codes(codes) {}
        void apply(const FrameUnderWay&, Picture&) override {}
        bool takesCodes() const override { return codes; }

    private:
        const bool codes;
    };
    const auto stepThatTakes = [](bool codes) {
        return [codes] {
            PictureSteps steps;
            steps.push_back(std::make_unique<Nothing>(codes));
            return steps;
        };
    };
    const FakeSource source({1});
    const auto allows = [&](const MakePictureSteps& steps, ReadAhead::Samples samples) {
        ReadAhead sut(source, planOf(1), {1, 2}, steps, {}, samples);
        return sut.next()->picture->allowsCodes();
    };
    EXPECT_TRUE(allows({}, ReadAhead::Samples::AlsoCodes));
    EXPECT_TRUE(allows(stepThatTakes(true), ReadAhead::Samples::AlsoCodes));
    EXPECT_FALSE(allows(stepThatTakes(false), ReadAhead::Samples::AlsoCodes));
    EXPECT_FALSE(allows({}, ReadAhead::Samples::Floats));
}

TEST(ReadAhead, UsesNoMorePicturesThanItMay) {
    const FakeSource source({1});
    ReadAhead sut(source, planOf(100), {3, 4});
    std::set<const Picture*> pictures;
    while (const auto frame = sut.next()) {
        pictures.insert(frame->picture);
    }
    EXPECT_LE(pictures.size(), 4u);
}

TEST(ReadAhead, WaitsForAPictureBeforeItBeginsAFrame) {
    FakeSource source({1});
    std::atomic<int> begun{0};
    source.onRead = [&](int) { ++begun; };
    ReadAhead sut(source, planOf(100), {2, 3});
    for (int taken = 1; taken <= 10; ++taken) {
        sut.next();
        // The taker has one of the three pictures; each frame taken before gave its picture back.
        EXPECT_LE(begun.load(), taken + 2);
    }
}

TEST(ReadAhead, ReadsSeveralFramesAtOnce) {
    FakeSource source({1});
    std::latch bothReading(2);
    source.onRead = [&](int number) {
        if (number <= 2) {
            bothReading.arrive_and_wait();  // for ever, were there one thread only
        }
    };
    ReadAhead sut(source, planOf(2), {2, 5});
    EXPECT_EQ(sut.next()->planned.number, 1);
    EXPECT_EQ(sut.next()->planned.number, 2);
}

TEST(ReadAhead, ThrowsWhereTheUnreadableFrameHasItsTurn) {
    FakeSource source({1});
    source.onRead = [](int number) {
        if (number == 3) {
            throw UnreadableImage("frame3 is broken");
        }
    };
    ReadAhead sut(source, planOf(5), {2, 5});
    EXPECT_EQ(sut.next()->planned.number, 1);
    EXPECT_EQ(sut.next()->planned.number, 2);
    EXPECT_THROW(sut.next(), UnreadableImage);
    EXPECT_EQ(sut.next()->planned.number, 4) << "the others can still be had";
}

TEST(ReadAhead, DoesTheStepsToABlackFrameAsToAPictureOfThatSize) {
    class Marking : public PictureStep {
    public:
        void apply(const FrameUnderWay& frame, Picture& picture) override {
            EXPECT_EQ(frame.header.display.width, 3);
            picture.row(0, 1)[2] += 1;
        }
    };
    const FakeSource source({1});
    const auto steps = [] {
        PictureSteps made;
        made.push_back(std::make_unique<Marking>());
        return made;
    };
    PictureHeader blank;
    blank.display = {0, 0, 3, 2};
    blank.hasAlpha = true;
    ReadAhead sut(source, {{1, std::nullopt, 1}, {2, std::nullopt, 2}}, {1, 2}, steps, blank);
    for (int time = 0; time < 2; ++time) {
        const auto frame = sut.next();
        ASSERT_TRUE(frame && frame->picture);
        EXPECT_EQ(frame->picture->width(), 3);
        EXPECT_EQ(frame->picture->channels(), 4);
        EXPECT_EQ(frame->picture->row(0, 1)[2], 1);
        EXPECT_EQ(frame->picture->row(3, 0)[0], 0);
    }
}

TEST(ReadAhead, GivesNoPictureForABlackFrame) {
    FakeSource source({1});
    source.onRead = [](int) { FAIL() << "there is nothing to read"; };
    ReadAhead sut(source, {{7, std::nullopt}}, {1, 2});
    const auto frame = sut.next();
    EXPECT_EQ(frame->planned.number, 7);
    EXPECT_EQ(frame->picture, nullptr);
}

// Adds a number of its own, then the position in the movie to the second channel.
class Adding : public PictureStep {
public:
    explicit Adding(float value) : number(value) {}
    void apply(const FrameUnderWay& frame, Picture& picture) override {
        if (frame.number == 13) {
            throw UnreadableImage("thirteen");
        }
        picture.row(0, 0)[0] = picture.row(0, 0)[0] * 10 + number;
        picture.row(1, 0)[0] = static_cast<float>(frame.position);
    }

private:
    float number;
};

PictureSteps twoSteps() {
    PictureSteps steps;
    steps.push_back(std::make_unique<Adding>(1.0f));
    steps.push_back(std::make_unique<Adding>(2.0f));
    return steps;
}

TEST(ReadAhead, DoesTheStepsInTheirOrder) {
    const FakeSource source({5, 7});
    ReadAhead sut(source, {{5, 5}, {7, 7}}, {2, 5}, twoSteps);

    sut.next();
    const auto second = sut.next();

    EXPECT_EQ(second->picture->row(0, 0)[0], 712.0f);
    EXPECT_EQ(second->picture->row(1, 0)[0], 1.0f);
}

TEST(ReadAhead, ThrowsWhereTheStepThatFailedHasItsTurn) {
    const FakeSource source({1});
    ReadAhead sut(source, {{12, 12}, {13, 13}}, {2, 5}, twoSteps);

    EXPECT_TRUE(sut.next());
    EXPECT_THROW(sut.next(), UnreadableImage);
}

TEST(ReadAhead, CanBeGivenUpAtAnyTime) {
    const FakeSource source({1});
    for (int taken : {0, 1, 5}) {
        ReadAhead sut(source, planOf(1000), {3, 7});
        for (int i = 0; i < taken; ++i) {
            sut.next();
        }
    }
}

TEST(ReadAheadLimits, HaveWorkForEveryThread) {
    const ReadAhead::Limits limits = ReadAhead::limitsFor(4, 1000, 1'000'000);
    EXPECT_EQ(limits.threads, 4u);
    EXPECT_EQ(limits.pictures, 6u);
}

TEST(ReadAheadLimits, StayWithinTheMemory) {
    const ReadAhead::Limits limits = ReadAhead::limitsFor(16, 100, 500);
    EXPECT_EQ(limits.pictures, 5u);
    EXPECT_EQ(limits.threads, 4u);
}

TEST(ReadAheadLimits, AllowTwoPicturesOfAnySize) {
    const ReadAhead::Limits limits = ReadAhead::limitsFor(16, 1'000'000, 10);
    EXPECT_EQ(limits.pictures, 2u);
    EXPECT_EQ(limits.threads, 1u);
}

}  // namespace
}  // namespace Corvel
