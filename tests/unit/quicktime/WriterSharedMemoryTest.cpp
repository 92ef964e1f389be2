// How frames and samples get into shared memory.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>

#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "tests/unit/quicktime/ControllerFixture.h"

namespace {

using Morvane::QuickTime::createWriterController;
using Morvane::QuickTime::QuickTimeCodecWriterIPCController;
using Morvane::Testing::Texts;

class WriterSharedMemory
    : public Morvane::Testing::ControllerFixture<QuickTimeCodecWriterIPCController, createWriterController> {
protected:
    void configure(std::int32_t width, std::int32_t height) {
        sut->configure(width, height, 1, 4, false, "", 25.0f);
        sent();
    }

    static std::string pattern(std::size_t length) {
        std::string bytes(length, '\0');
        for (std::size_t index = 0; index < length; ++index) {
            bytes[index] = static_cast<char>(index * 7 + 1);
        }
        return bytes;
    }

    /// Runs `action` with the messages that it is expected to leave on standard error put aside.
    template <typename Action>
    static std::string errorsOf(Action action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(WriterSharedMemory, TakesAFrameInPlace) {
    configure(2, 2);
    char* const buffer = sut->acquireBuffer(2 * 2 * 4);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer, sut->sharedData());
    const std::string frame = pattern(64);
    std::memcpy(buffer, frame.data(), frame.size());

    EXPECT_EQ(sut->addFrame(12, buffer, false), 0);
    sut->releaseBuffer(buffer);

    EXPECT_EQ(sent(), Texts{"W00000001:12:0"});
    EXPECT_EQ(lastPayload(), frame);
    EXPECT_EQ(sut->sharedData(), nullptr);
}

// Deliberate: the size counts values of four bytes, and a frame in place is taken at any size.
TEST_F(WriterSharedMemory, CopiesNothingOfAFrameInPlace) {
    configure(4, 4);
    char* const buffer = sut->acquireBuffer(1);
    std::memcpy(buffer, "abcd", 4);

    sut->addFrame(1, buffer, false);

    EXPECT_EQ(lastPayload(), "abcd");
}

TEST_F(WriterSharedMemory, CopiesAFrameFromAnywhereElse) {
    configure(2, 3);
    const std::string frame = pattern(96);

    EXPECT_EQ(sut->addFrame(-1, frame.data(), true), 0);

    EXPECT_EQ(sent(), Texts{"W00000001:-1:1"});
    EXPECT_EQ(lastPayload(), frame);
}

TEST_F(WriterSharedMemory, CopiesAFrameFromAnywhereElseWhileABufferIsAcquired) {
    configure(2, 2);
    char* const buffer = sut->acquireBuffer(16);
    std::memset(buffer, 'x', 64);
    const std::string frame = pattern(64);

    sut->addFrame(1, frame.data(), false);

    EXPECT_EQ(lastPayload(), frame);
}

TEST_F(WriterSharedMemory, GivesTheBufferBack) {
    char* const buffer = sut->acquireBuffer(16);

    sut->releaseBuffer(buffer);

    EXPECT_EQ(sut->sharedData(), nullptr);
}

TEST_F(WriterSharedMemory, ReadsTheCodeOfAnErrorAndTakesAllElseForSuccess) {
    configure(1, 1);
    const std::string frame = pattern(16);
    recording.answer("W00000001", "Error: 3", 1);
    recording.answer("W00000001", "-50", 2);
    recording.answer("W00000001", "Error: -34", 3);
    recording.answer("W00000001", "", 4);

    EXPECT_EQ(sut->addFrame(1, frame.data(), false), 3);
    EXPECT_EQ(sut->addFrame(1, frame.data(), false), 0);
    EXPECT_EQ(sut->addFrame(1, frame.data(), false), -34);
    EXPECT_EQ(sut->addFrame(1, frame.data(), false), 0);
}

TEST_F(WriterSharedMemory, AnswersNullWhenABufferCannotBeHad) {
    const std::string errors =
        errorsOf([&] { EXPECT_EQ(sut->acquireBuffer(std::size_t{1} << 60), nullptr); });

    EXPECT_NE(errors.find("file resize failed: "), std::string::npos);
}

TEST_F(WriterSharedMemory, FailsAFrameWithoutABuffer) {
    configure(2, 2);

    EXPECT_EQ(sut->addFrame(1, nullptr, false), -108);

    EXPECT_EQ(sent(), Texts{});
}

/// While it lives, no file of this process can grow beyond `bytes`.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, action);
    }

private:
    rlimit before{};
    void (*const action)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(WriterSharedMemory, GoesOnAfterABufferThatCouldNotBeHad) {
    constexpr std::size_t count = 1 << 20;
    configure(2, 2);
    {
        const FileSizeLimit limit(1 << 20);
        errorsOf([&] { EXPECT_EQ(sut->acquireBuffer(count), nullptr); });
    }

    char* const small = sut->acquireBuffer(16);
    ASSERT_NE(small, nullptr);
    EXPECT_EQ(sut->addFrame(1, small, false), 0);

    char* const large = sut->acquireBuffer(count);
    ASSERT_NE(large, nullptr);
    std::memset(large, 'x', count * 4);
    EXPECT_EQ(sut->addFrame(1, large, false), 0);
    EXPECT_EQ(lastPayload().size(), count * 4);
}

TEST_F(WriterSharedMemory, FailsAFrameOfASizeThatNoMemoryHas) {
    configure(-1, 1);
    const std::string frame = pattern(64);

    errorsOf([&] { EXPECT_EQ(sut->addFrame(1, frame.data(), false), -108); });

    EXPECT_EQ(sent(), Texts{});
}

// Deliberate: the byte count wraps in 32 bits; 16384 x 16384 pixels count as none.
TEST_F(WriterSharedMemory, CopiesNothingOfAFrameWhoseBytesWrapToNone) {
    configure(16384, 16384);

    EXPECT_EQ(sut->addFrame(1, nullptr, false), 0);

    EXPECT_EQ(sent(), Texts{"W00000001:1:0"});
}

TEST_F(WriterSharedMemory, SetsASampleFormat) {
    sut->setSampleFormat(2, true, 48000, "stereo");

    EXPECT_EQ(sent(), Texts{"W00000014:2:1:48000"});
    EXPECT_EQ(lastText(), "stereo");
}

TEST_F(WriterSharedMemory, CopiesFourBytesASampleFrame) {
    sut->setSampleFormat(1, false, 4000000000u, "");
    const std::string samples = pattern(40);
    recording.answer("W00000012", "Error: -50");

    EXPECT_EQ(sut->addSamples(-5000000000, 10, samples.data()), -50);

    EXPECT_EQ(sent(), (Texts{"W00000014:1:0:4000000000", "W00000012:-5000000000:10"}));
    EXPECT_EQ(lastPayload().substr(0, 40), samples);
}

TEST_F(WriterSharedMemory, TakesSamplesInPlace) {
    sut->setSampleFormat(1, true, 48000, "");
    char* const buffer = sut->acquireBuffer(10);
    const std::string samples = pattern(40);
    std::memcpy(buffer, samples.data(), samples.size());

    EXPECT_EQ(sut->addSamples(0, 10, buffer), 0);

    EXPECT_EQ(lastPayload(), samples);
}

TEST_F(WriterSharedMemory, CopiesNoSamplesBeforeAFormatIsSet) {
    configure(1, 1);
    const std::string before = (sut->finishVideo(), lastPayload());

    EXPECT_EQ(sut->addSamples(0, 10, nullptr), 0);

    sent();
    EXPECT_EQ(lastPayload().size(), before.size());
}

}  // namespace
