// Parser against formatter over a whole day. The frames of a day repeat themselves minute by minute, so a few
// minutes are gone through frame by frame, the first and last frames of every minute too, and the rest in
// steps.

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "timecode/Timecode.h"

namespace {

using namespace Morvane::Timecode;

constexpr std::int64_t secondsADay = 24 * 3600;

class EveryRate : public testing::TestWithParam<std::uint32_t> {
protected:
    const FrameRate plain{GetParam(), false};
    const FrameRate flagged{GetParam(), true};
    const std::int64_t framesADay = secondsADay * GetParam();

    void forFramesOfADay(const std::function<void(std::int64_t)>& check) const {
        const std::int64_t framesAMinute = 60 * std::int64_t{GetParam()};
        const std::set<std::int64_t> wholeMinutes{0, 1, 9, 10, 59, 60, 1439};
        for (std::int64_t minute = 0; minute < secondsADay / 60; ++minute) {
            const std::int64_t step = wholeMinutes.count(minute) != 0 ? 1 : 173;
            const std::int64_t first = minute * framesAMinute;
            for (std::int64_t frame = first; frame < first + framesAMinute; frame += step) {
                check(frame);
            }
            check(first + 1);
            check(first + framesAMinute - 1);
        }
    }

    std::int64_t thereAndBack(std::int64_t frame, FrameRate rate, Mode mode, bool plus = false) const {
        return parseTimecode(formatTimecode(frame, rate, mode, plus), rate, mode);
    }
};

TEST_P(EveryRate, NonDropTextsReadBackAsTheFrame) {
    forFramesOfADay([&](std::int64_t frame) {
        ASSERT_EQ(thereAndBack(frame, plain, Mode::NonDrop), frame);
        ASSERT_EQ(formatTimecode(frame, flagged, Mode::NonDrop), formatTimecode(frame, plain, Mode::NonDrop));
    });
}

TEST_P(EveryRate, FrameNumbersReadBackAsTheFrame) {
    forFramesOfADay([&](std::int64_t frame) {
        ASSERT_EQ(thereAndBack(frame, plain, Mode::FrameNumber), frame);
        ASSERT_EQ(thereAndBack(-frame, plain, Mode::FrameNumber), -frame);
    });
}

TEST_P(EveryRate, FeetAndFramesReadBackAsTheFrame) {
    forFramesOfADay([&](std::int64_t frame) {
        ASSERT_EQ(thereAndBack(frame, plain, Mode::Feet40), frame);
        ASSERT_EQ(thereAndBack(frame, plain, Mode::Feet16, true), frame);
    });
}

// Deliberate: formatter and parser of drop-frame texts count by different rules. The formatter numbers
// as 29.97 does, the parser takes off 20 frames for every ten minutes of its text.
TEST_P(EveryRate, DropTextsReadBackByTheParsersOwnRule) {
    forFramesOfADay([&](std::int64_t frame) {
        const std::int64_t inTenMinutes = frame % 17982;
        const std::int64_t skipped =
            18 * (frame / 17982) + 2 * (inTenMinutes < 2 ? 0 : (inTenMinutes - 2) / 1798);
        const std::int64_t shown = (frame + skipped) % framesADay;
        const std::int64_t tens = shown / GetParam() / 600;
        ASSERT_EQ(thereAndBack(frame, plain, Mode::Drop), shown - 20 * tens) << frame;
    });
}

// So they agree only where as many minutes as ten-minute blocks have passed: the first minute, the second
// minute of the second block, and so on up to the tenth.
TEST(DropFrameAt2997, ReadsBackAsTheFrameOnlyWhereBothRulesMeet) {
    const FrameRate ntsc(30, true);
    for (std::int64_t frame = 0; frame < 30 * secondsADay / 8; ++frame) {
        const std::int64_t block = frame / 17982;
        const std::int64_t inBlock = frame % 17982;
        const std::int64_t minute = inBlock < 2 ? 0 : (inBlock - 2) / 1798;
        const std::int64_t read = parseTimecode(formatTimecode(frame, ntsc, Mode::Drop), ntsc, Mode::Drop);
        ASSERT_EQ(read == frame, block == minute) << frame;
    }
}

// Deliberate: what else does not come back.
TEST_P(EveryRate, SignsAndSecondDaysDoNotReadBack) {
    EXPECT_EQ(thereAndBack(-5, plain, Mode::NonDrop), invalidTimecode);
    EXPECT_EQ(thereAndBack(5, plain, Mode::NonDrop, true), invalidTimecode);
    EXPECT_EQ(thereAndBack(framesADay + 5, plain, Mode::NonDrop), 5);
    EXPECT_EQ(thereAndBack(-45, plain, Mode::Feet40), -35);  // "-01+05"
}

INSTANTIATE_TEST_SUITE_P(WholeDay, EveryRate, testing::Values(6, 12, 24, 25, 30, 48, 50, 60, 120));

}  // namespace
