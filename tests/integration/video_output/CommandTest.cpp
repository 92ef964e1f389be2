#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "Program.h"
#include "Receiver.h"
#include "VirtualDisplay.h"

namespace Morvane::Testing {
namespace {

using testing::HasSubstr;

constexpr int screenWidth = 1400;
constexpr int screenHeight = 900;

/// What the host makes of linear light.
float displayed(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

/// `corvel` as a person uses it, on images in a folder of the test's own.
class Commands : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER", "CORVEL_TEMP_DIR"})
            unsetenv(name);
        if (!hasProgram("oiiotool"))
            GTEST_SKIP() << "not installed: oiiotool";
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }

    void TearDown() override { std::filesystem::remove_all(folder); }

    /// A sequence of `count` frames of one colour, in linear light; answers its pattern.
    std::string makeSequence(int count, int width, int height, const std::string& colour) {
        const std::filesystem::path first = folder / "f.1.exr";
        outputOf({"oiiotool", "--pattern", "constant:color=" + colour,
                  std::to_string(width) + "x" + std::to_string(height), "3", "-d", "half", "-o",
                  first.string()});
        for (int frame = 2; frame <= count; ++frame)
            std::filesystem::copy_file(first, folder / ("f." + std::to_string(frame) + ".exr"));
        return (folder / "f.#.exr").string();
    }

    /// Runs `corvel` to its end; answers its exit code and keeps what it wrote.
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CORVEL_PROGRAM);
        Program program(arguments, {.standardError = (folder / "stderr").string()});
        standardOutput = program.allOutput();
        return program.exitCode();
    }

    std::string standardError() const {
        std::ifstream file(folder / "stderr");
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    const std::filesystem::path folder =
        std::filesystem::path(CORVEL_SCRATCH_FOLDER) /
        (std::string("VideoOutput-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::string standardOutput;
};

TEST_F(Commands, DevicesWithoutADisplayListsTheNetwork) {
    EXPECT_EQ(run({"devices"}), 0);
    EXPECT_THAT(standardOutput, HasSubstr("1  Network 127.0.0.1:5004\n"));
    EXPECT_THAT(standardOutput, HasSubstr("1920 x 1080 at 23.976, 24, 25,"));
    EXPECT_EQ(standardError(), "");
}

TEST_F(Commands, DevicesAsJsonHaveTheirModes) {
    EXPECT_EQ(run({"devices", "--json"}), 0);

    const auto devices = nlohmann::json::parse(standardOutput);
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0]["name"], "Network 127.0.0.1:5004");
    EXPECT_EQ(devices[0]["handle"], 1);
    EXPECT_THAT(devices[0]["modes"],
                testing::Contains(nlohmann::json{
                    {"width", 1920}, {"height", 1080}, {"rate", 29.97}, {"name", "1920 x 1080, 29.97"}}));
}

TEST_F(Commands, PlaySendsEveryFrameToTheNetwork) {
    const std::string input = makeSequence(30, 320, 180, "0.1,0.4,0.7");
    const int port = freePort();
    Receiver receiver(
        {"ffmpeg", "-v", "error", "-i", receiverUrl(port), "-sws_flags", "accurate_rnd+full_chroma_int",
         "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"},
        port);

    EXPECT_EQ(
        run({"play", input, "--device", "Network 127.0.0.1:" + std::to_string(port), "--mode", "640x360@25"}),
        0);

    EXPECT_THAT(standardError(), HasSubstr("corvel: frame 1 (1 of 30)"));
    EXPECT_THAT(standardError(), HasSubstr("frames shown, "));
    const std::string samples = receiver.output();
    ASSERT_EQ(samples.size(), 640U * 360U * 3U);
    const auto* centre = reinterpret_cast<const std::uint8_t*>(samples.data()) + (180 * 640 + 320) * 3;
    EXPECT_NEAR(centre[0], displayed(0.1F) * 255, 2.5);
    EXPECT_NEAR(centre[1], displayed(0.4F) * 255, 2.5);
    EXPECT_NEAR(centre[2], displayed(0.7F) * 255, 2.5);
}

TEST_F(Commands, MoviesArePlayedToo) {
    const std::string input = makeSequence(12, 320, 180, "0.1,0.4,0.7");
    const std::string movie = (folder / "m.mov").string();
    ASSERT_EQ(run({"render", input, "-o", movie, "--codec", "png "}), 0);
    const std::string device = "Network 127.0.0.1:" + std::to_string(freePort());

    EXPECT_EQ(run({"play", movie, "--frames", "3-12", "--device", device, "--mode", "640x360@50"}), 0);

    EXPECT_THAT(standardError(), HasSubstr("corvel: frame 3 (1 of 10)"));
    EXPECT_THAT(standardError(), HasSubstr(device + ": "));
}

TEST_F(Commands, MissingFramesCanBeBlack) {
    const std::string input = makeSequence(3, 32, 18, "0.5,0.5,0.5");
    const std::string device = "Network 127.0.0.1:" + std::to_string(freePort());
    const std::vector<std::string> arguments{"play",     input,  "--frames", "0-3",
                                             "--device", device, "--mode",   "640x360@50"};

    EXPECT_EQ(run(arguments), 3);
    std::vector<std::string> black = arguments;
    black.insert(black.end(), {"--missing", "black"});
    EXPECT_EQ(run(black), 0);
    EXPECT_THAT(standardError(), HasSubstr("corvel: frame 0 (1 of 4)"));
}

TEST_F(Commands, WhatCannotBePlayedIsSaid) {
    const std::string input = makeSequence(2, 32, 18, "0.5,0.5,0.5");

    EXPECT_EQ(run({"play", (folder / "none.#.exr").string(), "--device", "1", "--mode", "640x360@25"}), 3);
    EXPECT_EQ(run({"play", input, "--device", "projector", "--mode", "640x360@25"}), 2);
    EXPECT_THAT(standardError(), HasSubstr("there is no video output \"projector\""));
    EXPECT_EQ(run({"play", input, "--device", "1", "--mode", "641x360@25"}), 2);
    EXPECT_EQ(run({"play", input, "--device", "Network nowhere", "--mode", "640x360@25"}), 1);
    EXPECT_THAT(standardError(), HasSubstr("\"Network nowhere\""));
    EXPECT_EQ(run({"play", input}), 2);
}

TEST_F(Commands, AFrameThatCannotBeReadEndsPlaying) {
    const std::string input = makeSequence(3, 32, 18, "0.5,0.5,0.5");
    std::filesystem::resize_file(folder / "f.2.exr", 400);
    const std::string device = "Network 127.0.0.1:" + std::to_string(freePort());

    EXPECT_EQ(run({"play", input, "--device", device, "--mode", "640x360@25"}), 3);
    EXPECT_THAT(standardError(), HasSubstr("f.2.exr"));
}

/// `corvel play` while a person looks.
class CommandsOnADisplay : public Commands {
protected:
    void SetUp() override {
        Commands::SetUp();
        if (const std::string missing = VirtualDisplay::missingPrograms(); !missing.empty())
            GTEST_SKIP() << "not installed: " << missing;
        if (!IsSkipped())
            display.emplace(screenWidth, screenHeight);
    }

    Program start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CORVEL_PROGRAM);
        return Program(arguments, {.standardError = (folder / "stderr").string()});
    }

    std::optional<VirtualDisplay> display;
};

TEST_F(CommandsOnADisplay, PlayScalesIntoTheWindowUntilItIsClosed) {
    const std::string input = makeSequence(2, 320, 320, "0.05,0.5,0.9");
    Program playing = start({"play", input, "--device", "display", "--mode", "1280x720@25", "--loop"});

    // A square in 1280 x 720, which stands in the middle of 1400 x 900.
    const TestFrame square = TestFrame::flat(720, 720, displayed(0.05F), displayed(0.5F), displayed(0.9F));
    EXPECT_LE(display->differenceOnceShown(square, (screenWidth - 720) / 2, (screenHeight - 720) / 2), 2);
    const Bytes picture = display->screenshot();
    EXPECT_LE(largestDifference(TestFrame::flat(280, 720, 0, 0, 0), picture, 60, 90), 2);

    display->closeWindow("Display 1: screen");
    playing.allOutput();
    EXPECT_EQ(playing.exitCode(), 0);
    EXPECT_THAT(standardError(), HasSubstr("frames shown, "));
}

TEST_F(CommandsOnADisplay, PlayIsInterrupted) {
    const std::string input = makeSequence(2, 32, 18, "0.5,0.5,0.5");
    Program playing =
        start({"play", input, "--device", "display", "--mode", "640x360@25", "--loop", "--full-screen"});
    const TestFrame grey = TestFrame::flat(1400, 780, displayed(0.5F), displayed(0.5F), displayed(0.5F));
    EXPECT_LE(display->differenceOnceShown(grey, 0, 60), 2);

    kill(playing.pid(), SIGINT);

    playing.allOutput();
    EXPECT_EQ(playing.exitCode(), 130);
}

TEST_F(CommandsOnADisplay, ADisplayThatDisappearsEndsPlaying) {
    const std::string input = makeSequence(2, 32, 18, "0.5,0.5,0.5");
    Program playing = start({"play", input, "--device", "display", "--mode", "640x360@25", "--loop"});
    const TestFrame grey = TestFrame::flat(640, 360, displayed(0.5F), displayed(0.5F), displayed(0.5F));
    EXPECT_LE(display->differenceOnceShown(grey, (screenWidth - 640) / 2, (screenHeight - 360) / 2), 2);

    display->kill();

    playing.allOutput();
    EXPECT_EQ(playing.exitCode(), 1);
    EXPECT_THAT(standardError(), HasSubstr("the display server has gone (-36)"));
}

TEST_F(CommandsOnADisplay, AHelperThatDiesEndsPlaying) {
    const std::string input = makeSequence(2, 32, 18, "0.5,0.5,0.5");
    Program playing = start({"play", input, "--device", "display", "--mode", "640x360@25", "--loop"});
    const TestFrame grey = TestFrame::flat(640, 360, displayed(0.5F), displayed(0.5F), displayed(0.5F));
    EXPECT_LE(display->differenceOnceShown(grey, (screenWidth - 640) / 2, (screenHeight - 360) / 2), 2);

    const std::vector<pid_t> helpers = childrenOf(playing.pid());
    ASSERT_EQ(helpers.size(), 1U);
    kill(helpers[0], SIGKILL);

    playing.allOutput();
    EXPECT_EQ(playing.exitCode(), 4);
    EXPECT_THAT(standardError(), HasSubstr("the QuickTime helper died (signal 9)"));
}

}  // namespace
}  // namespace Morvane::Testing
