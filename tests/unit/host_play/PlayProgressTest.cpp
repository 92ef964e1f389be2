#include "host/play/PlayProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace Corvel {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// What is written to a console that is no terminal.
class PlayProgressTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(pipe(ends), 0); }
    void TearDown() override { close(ends[0]); }

    std::string written() {
        close(ends[1]);
        std::string text(4096, ' ');
        const ssize_t length = read(ends[0], text.data(), text.size());
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        return text;
    }

    int ends[2];
};

TEST_F(PlayProgressTest, TheFirstFrameIsToldAtOnceAndOthersNotForEachFrame) {
    Console console(ends[1]);
    {
        PlayProgress sut(console, 100);
        sut.sent(1001);
        sut.sent(1002);
        EXPECT_EQ(sut.frames(), 2);
    }

    const std::string text = written();
    EXPECT_THAT(text, StartsWith("corvel: frame 1001 (1 of 100)"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
}

TEST_F(PlayProgressTest, AnEndlessLoopHasNoTotal) {
    Console console(ends[1]);
    {
        PlayProgress sut(console, 0);
        sut.sent(7);
    }

    EXPECT_THAT(written(), StartsWith("corvel: frame 7 (1)"));
}

}  // namespace
}  // namespace Corvel
