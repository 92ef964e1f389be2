#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include "platform/ProcessWatch.h"
#include "tests/integration/real_worker/RawController.h"
#include "tests/integration/real_worker/WorkerFixture.h"
#include "tests/integration/worker_write/WalkMovies.h"

namespace Morvane::Testing {
namespace {

/// Requests that no controller sends, or not in this order. Each must be answered once, and the next one too.
class RequestOrderTest : public WorkerFixture {
protected:
    void SetUp() override {
        WorkerFixture::SetUp();
        // Whatever file a nonsensical request may name lies here.
        std::filesystem::current_path(folder);
        sut = std::make_unique<RawController>(newBridgeName(), "write");
    }
    void TearDown() override {
        EXPECT_NE(sut->ask("W0000000e").find("mjpa\tMotion JPEG A"), std::string::npos);
        sut.reset();
        std::filesystem::current_path("/");
        walkMoviesIn(folder);
        WorkerFixture::TearDown();
    }

    void configure(const std::string& size = "16:16") {
        sut->ask("W00000009:0");
        sut->ask("W00000005:" + size + ":24:1:4:0", "");
    }
    void open() {
        configure();
        ASSERT_EQ(sut->ask("W00000000:" + path("a.mov") + ":1"), "0");
    }
    std::string addFrame() { return sut->askWithZeros("W00000001:1:0", 16 * 16 * 16); }

    std::unique_ptr<RawController> sut;
};

TEST_F(RequestOrderTest, AnswersWhatIsNoRequest) {
    for (const char* request : {"", "W", "X00000001", "R00000001:a:1", "W00000063", "Wzzzzzzzz", "W00000001",
                                "W00000001:1", "W00000005:1:2", "W00000009:\\q", "W00000009:\\", "Wffffffff"})
        EXPECT_EQ(sut->ask(request), "Error: -50") << request;
}

TEST_F(RequestOrderTest, AnswersTheNumberAloneWhereTheOperationAnswersOne) {
    EXPECT_EQ(sut->ask("W00000000"), "-50");
    EXPECT_EQ(sut->ask("W00000000:a.mov"), "-50");
    EXPECT_EQ(sut->ask("W00000004"), "-50");
}

TEST_F(RequestOrderTest, AnswersARequestWithoutAnEnd) {
    sut->putRequestBytes("W0000000e");

    EXPECT_EQ(sut->askUnchanged(), "Error: -50");
    EXPECT_NE(errors().find("(-50)"), std::string::npos);
}

TEST_F(RequestOrderTest, RefusesEverythingThatNeedsAMovieWhenNoneIsOpen) {
    configure();

    EXPECT_EQ(addFrame(), "Error: -50");
    for (const char* request :
         {"W00000002", "W00000013", "W00000003:0:a.wav", "W0000000c:24:0:reel", "W00000012:0:0"})
        EXPECT_EQ(sut->ask(request), "Error: -50") << request;
    EXPECT_EQ(sut->ask("W00000014:1:0:48000", "mono"), "Error: -50");
    EXPECT_EQ(sut->ask("W00000004:1"), "-50");
}

TEST_F(RequestOrderTest, RefusesToOpenBeforeItIsConfigured) {
    EXPECT_EQ(sut->ask("W00000000:a.mov:1"), "-50");
    sut->ask("W00000009:0");
    EXPECT_EQ(sut->ask("W00000000:a.mov:1"), "-50");
    EXPECT_FALSE(std::filesystem::exists("a.mov"));
}

TEST_F(RequestOrderTest, ForgetsTheConfigurationWithTheCodec) {
    configure();
    sut->ask("W00000009:1");

    EXPECT_EQ(sut->ask("W00000000:a.mov:1"), "-50");
}

TEST_F(RequestOrderTest, RefusesACodecThatIsNotInTheList) {
    configure();
    EXPECT_EQ(sut->ask("W00000009:4000"), "Error: -50");
    EXPECT_EQ(sut->ask("W00000005:16:16:24:1:4:0", ""), "Error: -50");

    EXPECT_EQ(sut->ask("W00000000:a.mov:1"), "-50");
}

TEST_F(RequestOrderTest, RefusesASecondMovieWhileOneIsOpen) {
    open();

    EXPECT_EQ(sut->ask("W00000000:" + path("b.mov") + ":1"), "-50");

    EXPECT_EQ(addFrame(), "0");
    EXPECT_EQ(sut->ask("W00000004:1"), "0");
    EXPECT_FALSE(std::filesystem::exists(path("b.mov")));
}

TEST_F(RequestOrderTest, RefusesAnOpeningModeThatIsNone) {
    configure();

    EXPECT_EQ(sut->ask("W00000000:a.mov:7"), "-50");
    EXPECT_EQ(sut->ask("W00000000:a.mov:-1"), "-50");
}

TEST_F(RequestOrderTest, RefusesFramesAfterThePicturesAreFinished) {
    open();
    EXPECT_EQ(addFrame(), "0");
    EXPECT_EQ(sut->ask("W00000002"), "0");

    EXPECT_EQ(addFrame(), "Error: -50");

    EXPECT_EQ(sut->ask("W00000004:1"), "0");
}

TEST_F(RequestOrderTest, RefusesAFrameThatTheSharedFileDoesNotHold) {
    open();

    EXPECT_EQ(sut->askWithZeros("W00000001:1:0", 64), "Error: -50");

    EXPECT_EQ(addFrame(), "0");
    EXPECT_EQ(sut->ask("W00000004:1"), "0");
}

TEST_F(RequestOrderTest, RefusesAFrameOfTheNextMoviesSize) {
    open();
    configure("32:32");

    EXPECT_EQ(sut->askWithZeros("W00000001:1:0", 32 * 32 * 16), "Error: -50");

    configure();
    EXPECT_EQ(addFrame(), "0");
    EXPECT_EQ(sut->ask("W00000004:1"), "0");
}

TEST_F(RequestOrderTest, RefusesNumbersOfSamplesThatCannotBe) {
    open();
    EXPECT_EQ(sut->ask("W00000014:1:1:48000", "mono"), "0");

    EXPECT_EQ(sut->ask("W00000012:0:-1"), "Error: -50");
    EXPECT_EQ(sut->ask("W00000012:0:4611686018427387904"), "Error: -50");
    EXPECT_EQ(sut->ask("W00000012:0:9223372036854775807"), "Error: -50");
    EXPECT_EQ(sut->ask("W00000012:0:1000000"), "Error: -50");

    EXPECT_EQ(addFrame(), "0");
    EXPECT_EQ(sut->ask("W00000004:1"), "0");
}

TEST_F(RequestOrderTest, RefusesSizesAndRatesThatCannotBe) {
    for (const char* setup : {"0:16:24", "-16:16:24", "16:0:24", "2147483647:2147483647:24", "16:16:0",
                              "16:16:-24", "16:16:nan", "16:16:1e30"}) {
        configure();
        sut->ask(std::string("W00000005:") + setup + ":1:4:0", "");
        EXPECT_NE(sut->ask("W00000000:a.mov:1"), "0") << setup;
    }
    EXPECT_FALSE(std::filesystem::exists("a.mov"));
}

/// Bytes without sense and requests with some of them changed: one answer each, and the worker lives.
TEST_F(RequestOrderTest, SurvivesRandomRequests) {
    std::mt19937 random(7);
    const std::vector<std::string> starts = {
        "W00000000:x.mov:1",   "W00000001:1:0", "W00000005:16:16:24:1:4:0", "W00000009:3",
        "W0000000c:24:0:reel", "W00000012:0:8", "W00000014:1:1:48000",      "W00000003:1.5:x.wav",
        "W00000004:1",         "W00000002"};
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 1500; ++round) {
        std::string bytes = starts[below(starts.size())];
        for (std::size_t changes = below(5); changes > 0; --changes) {
            const auto byte = static_cast<char>(random());
            if (bytes.empty() || below(2) == 0)
                bytes.insert(below(bytes.size() + 1), 1, byte);
            else
                bytes[below(bytes.size())] = byte;
        }
        // No slash, so that whatever is created is created here.
        std::replace(bytes.begin(), bytes.end(), '/', '_');
        std::string data(1 + below(5000), '\0');
        for (char& byte : data)
            byte = static_cast<char>(random());
        sut->resizeSharedData(data.size());
        std::copy(data.begin(), data.end(), const_cast<char*>(sut->sharedData()));
        sut->putRequestBytes(bytes + (below(10) == 0 ? "" : std::string(1, '\0')));
        ASSERT_FALSE(sut->askUnchanged().empty());
        ASSERT_FALSE(Platform::endOfChild(sut->workerProcess()).has_value());
    }
}

TEST_F(RequestOrderTest, SurvivesSharedFilesThatAreCutOrGone) {
    open();
    EXPECT_EQ(addFrame(), "0");
    for (const auto& entry : std::filesystem::directory_iterator(folder / "bridge" / "processbridge"))
        std::filesystem::resize_file(entry.path(), 0);

    EXPECT_EQ(sut->ask("W00000002").substr(0, 1), "0");

    EXPECT_EQ(addFrame(), "Error: -50");
    EXPECT_EQ(sut->ask("W00000004:1"), "0");
}

}  // namespace
}  // namespace Morvane::Testing
