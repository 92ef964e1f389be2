#include "worker/sound/SoundFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include "platform/ChildProcesses.h"
#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

class SoundFileTest : public ::testing::Test {
protected:
    ~SoundFileTest() override {
        std::filesystem::remove(path);
        EXPECT_TRUE(Platform::childProcesses().empty());
    }

    static std::string number(std::uint32_t value, std::size_t bytes) {
        std::string text;
        for (std::size_t i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> (8 * i));
        return text;
    }

    /// RIFF WAVE: mono, 16 bits, 48 kHz.
    void writeSilence(std::uint32_t seconds) const {
        const std::uint32_t bytes = seconds * 96000;
        std::ofstream(path, std::ios::binary)
            << "RIFF" << number(36 + bytes, 4) << "WAVEfmt " << number(16, 4) << number(1, 2) << number(1, 2)
            << number(48000, 4) << number(96000, 4) << number(2, 2) << number(16, 2) << "data"
            << number(bytes, 4) << std::string(bytes, '\0');
    }

    static std::optional<Status> failureOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const StatusError& error) {
            return error.status;
        }
        return std::nullopt;
    }

    const std::string path = "/tmp/corvel-sound-file-" + std::to_string(getpid()) + ".wav";
};

TEST_F(SoundFileTest, ReadsAllSamples) {
    writeSilence(2);
    SoundFile sut(path);

    std::vector<std::uint8_t> block;
    std::size_t bytes = 0;
    while (sut.read(block))
        bytes += block.size();

    EXPECT_EQ(sut.format().sampleRate, 48000u);
    EXPECT_EQ(sut.format().channels, 1);
    EXPECT_EQ(bytes, 192000u);
}

TEST_F(SoundFileTest, TellsTheReasonForAFileThatIsMissing) {
    EXPECT_EQ(failureOf([&] { SoundFile sut(path); }), Status::NotFound);
}

TEST_F(SoundFileTest, RefusesWhatIsNoSound) {
    std::ofstream(path) << "text";
    EXPECT_EQ(failureOf([&] { SoundFile sut(path); }), Status::BadArgument);
}

TEST_F(SoundFileTest, RefusesSoundAtATimeThatIsTooFarOffToCount) {
    // A movie whose pictures begin after a second, its sound after 9,000,000,000,000.
    EXPECT_EQ(failureOf([] { SoundFile sut(SOUND_FILES "/movie-far-apart"); }), Status::BadArgument);
}

TEST_F(SoundFileTest, EndsItsDecoderThoughMuchIsUnread) {
    writeSilence(60);
    SoundFile sut(path);
    EXPECT_EQ(Platform::childProcesses().size(), 1u);
}

TEST_F(SoundFileTest, FailsWhereItsDecoderDies) {
    writeSilence(60);
    SoundFile sut(path);
    kill(Platform::childProcesses().at(0).process, SIGKILL);

    const auto failure = failureOf([&] {
        std::vector<std::uint8_t> block;
        while (sut.read(block)) {
        }
    });

    EXPECT_EQ(failure, Status::CodecFailed);
}

#ifdef __linux__
TEST_F(SoundFileTest, ConfinesItsDecoder) {
    writeSilence(60);
    SoundFile sut(path);
    std::ifstream status("/proc/" + std::to_string(Platform::childProcesses().at(0).process) + "/status");
    const std::string text(std::istreambuf_iterator<char>(status), {});
    EXPECT_NE(text.find("Seccomp:\t2"), std::string::npos) << text;
    EXPECT_NE(text.find("NoNewPrivs:\t1"), std::string::npos) << text;
}
#endif

}  // namespace
}  // namespace Morvane::Worker
