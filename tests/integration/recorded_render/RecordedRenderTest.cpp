#include <sys/resource.h>

#include <csignal>
#include <cstring>

#include "tests/integration/recorded_render/HostFixture.h"

namespace Morvane {
namespace {

using Requests = std::vector<std::string>;
using Kex::Image::Channel;

class RecordedRender : public Testing::HostFixture {
protected:
    /// The request that opens the temporary file; the path holds a ":", so it travels quoted.
    std::string openRequest() const { return "W00000000:\"" + node->writer()->temporaryFile() + "\":1"; }
};

TEST_F(RecordedRender, SendsTheRequestsOfAWholeRenderInOrder) {
    picture->metadata.setData("input/timecode", "01:00:00:00");
    picture->metadata.setData("quicktime/reel", "A:001");
    node->setDepth(4);
    make();
    node->knob("audiofile")->set_text("/sound/a:\"b\".wav");
    change("audio_offset", 36);
    change("units", 1);
    change("writeTimeCode", 1);
    node->knob("settings")->set_text("profile=3:bitdepth=10");

    renderFrame(1001);
    const std::string opening = openRequest();
    renderFrame(1002.9);
    node->finish();

    const std::size_t before = seen;
    EXPECT_EQ(newRequests(), (Requests{
                                 "W00000009:2",
                                 "W00000005:2:2:24:1:4:1",
                                 opening,
                                 "W00000001:1001:0",
                                 "W00000001:1002:0",
                                 "W00000002",
                                 "W00000003:1.5:\"/sound/a:\\\"b\\\".wav\"",
                                 "W0000000c:24:86400:\"A:001\"",
                                 "W00000004:1",
                             }));
    EXPECT_EQ(recording.payloadText(before + 1), "profile=3:bitdepth=10");
    EXPECT_TRUE(application.errors.empty());
    EXPECT_TRUE(application.warnings.empty());
    EXPECT_TRUE(std::filesystem::exists(output()));
}

TEST_F(RecordedRender, HandsOverAFrameByteForByte) {
    picture = std::make_unique<Kex::Image::Testing::TestPicture>(application, [](int, int y, Channel z) {
        return z == Kex::Image::Chan_Alpha ||
                       (y == 0 ? z == Kex::Image::Chan_Red : z == Kex::Image::Chan_Green)
                   ? 1.0F
                   : 0.0F;
    });
    node->setInput(0, picture.get());
    make();

    renderFrame(1);

    const Requests requests = newRequests();
    ASSERT_EQ(requests.back(), "W00000001:1:0");
    const std::string payload = recording.payload(seen - 1);
    // Two green pixels of the top row, then two red ones: R, G, B, A as 32-bit floats.
    const float expected[] = {0, 1, 0, 1, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1};
    ASSERT_GE(payload.size(), sizeof(expected));
    EXPECT_EQ(std::memcmp(payload.data(), expected, sizeof(expected)), 0);
}

TEST_F(RecordedRender, HandsOverAWidePictureWithTheHostsCurve) {
    constexpr int width = 67;
    constexpr int height = 3;
    picture = std::make_unique<Kex::Image::Testing::TestPicture>(application, [](int x, int y, Channel z) {
        return static_cast<float>(x) / 50 + static_cast<float>(y) - static_cast<float>(z) / 8;
    });
    node->setInput(0, picture.get());
    node->setFormat({width, height});
    node->setLut(nullptr);
    make();

    renderFrame(1);

    newRequests();
    const std::string payload = recording.payload(seen - 1);
    std::vector<float> pixels(static_cast<std::size_t>(width) * height * 4);
    ASSERT_GE(payload.size(), pixels.size() * sizeof(float));
    std::memcpy(pixels.data(), payload.data(), pixels.size() * sizeof(float));
    const Kex::Image::LUT& curve = *Kex::Image::LUT::getLut(6);
    for (int row = 0; row < height; ++row) {
        for (int x = 0; x < width; ++x) {
            for (int z = 1; z <= 4; ++z) {
                const double linear = static_cast<float>(x) / 50 + static_cast<float>(height - 1 - row) -
                                      static_cast<float>(z) / 8;
                const double expected = z == 4 ? linear : curve.toStored(linear);
                ASSERT_NEAR(pixels[static_cast<std::size_t>((row * width + x) * 4 + z - 1)], expected, 2e-6);
            }
        }
    }
}

TEST_F(RecordedRender, ConfiguresAgainBeforeTheSecondAttemptToOpen) {
    recording.answer("W00000000", "-54", 1);
    make();

    node->execute(1);
    EXPECT_EQ(application.errors, Requests{"Couldn't open file\n"});
    renderFrame(2);

    EXPECT_EQ(newRequests(), (Requests{"W00000009:2", "W00000005:2:2:24:1:4:0", openRequest(), "W00000009:2",
                                       "W00000005:2:2:24:1:4:0", openRequest(), "W00000001:2:0"}));
    EXPECT_EQ(application.errors.size(), 1U);
}

TEST_F(RecordedRender, ReportsTheWorkersFailuresWithFixedTexts) {
    recording.answer("W00000001", "Error: -34", 1);
    recording.answer("W00000004", "-36");
    make();

    renderFrame(1);
    renderFrame(2);
    node->finish();

    EXPECT_EQ(application.errors, (Requests{"Couldn't encode frame\n", "Failed to properly close file"}));
    EXPECT_TRUE(std::filesystem::exists(output()));
}

TEST_F(RecordedRender, EncodesTheRowsOfAnAbortedFrame) {
    application.questionsBeforeAbort = 1;
    make();

    renderFrame(1);

    EXPECT_EQ(newRequests().back(), "W00000001:1:0");
    const std::string payload = recording.payload(seen - 1);
    float first = 0;
    std::memcpy(&first, payload.data(), sizeof(first));
    EXPECT_EQ(first, 0.5F);
    EXPECT_EQ(application.fractions.back(), 1.0);
}

TEST_F(RecordedRender, WarnsAndClosesWhenOnlyTheReelIsKnown) {
    picture->metadata.setData("quicktime/reel", "A001");
    make();
    change("writeTimeCode", 1);
    renderFrame(1);
    newRequests();

    node->finish();

    EXPECT_EQ(newRequests(), (Requests{"W00000002", "W00000004:1"}));
    EXPECT_EQ(application.warnings.size(), 1U);
}

TEST_F(RecordedRender, FailsTheFrameWhenSharedMemoryCannotGrow) {
    make();
    renderFrame(1);
    newRequests();
    node->setFormat({4096, 16});
    struct rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    // As a full disk would: no file of this process grows beyond 4096 bytes.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit small = {4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    testing::internal::CaptureStderr();

    node->execute(2);

    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("file resize failed"), std::string::npos);
    EXPECT_EQ(application.errors, Requests{"Couldn't encode frame\n"});
    EXPECT_TRUE(newRequests().empty());
}

}  // namespace
}  // namespace Morvane
