#include "host/render/Reporter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "host/render/Log.h"
#include "spdlog/spdlog.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

class ReporterTest : public testing::Test {
protected:
    ReporterTest()
        : descriptor(open((folder / "lines").c_str(), O_CREAT | O_RDWR, 0600)), console(descriptor) {}
    ~ReporterTest() override { close(descriptor); }

    std::vector<std::string> lines() const {
        std::ifstream file(folder / "lines");
        std::vector<std::string> found;
        for (std::string line; std::getline(file, line);) {
            found.push_back(line);
        }
        return found;
    }

    const TemporaryFolder folder;
    const int descriptor;
    Console console;
};

using Lines = std::vector<std::string>;

TEST_F(ReporterTest, WritesMessagesInOneStyle) {
    const auto sut = createReporter(ProgressStyle::None, console);
    sut->message(MessageLevel::Error, "cannot read a.exr");
    sut->message(MessageLevel::Warning, "the time code is odd");
    sut->message(MessageLevel::Info, "hello");
    sut->helperLine("CorvelQuickTimeHelper-32: cannot write");
    EXPECT_EQ(lines(), (Lines{"corvel: cannot read a.exr", "corvel: warning: the time code is odd",
                              "corvel: hello", "CorvelQuickTimeHelper-32: cannot write"}));
}

TEST_F(ReporterTest, TakesWhatIsLogged) {
    const auto sut = createReporter(ProgressStyle::None, console);
    logTo(sut.get());
    spdlog::warn("{} things", 3);
    spdlog::error("bad");
    logTo(nullptr);
    spdlog::error("nobody hears this");
    EXPECT_EQ(lines(), (Lines{"corvel: warning: 3 things", "corvel: bad"}));
}

TEST_F(ReporterTest, TellsStartAndEndInPlainLines) {
    const auto sut = createReporter(ProgressStyle::Plain, console);
    sut->start({.frames = 2, .width = 64, .height = 36, .output = "a.mov"});
    sut->progress({.frame = 1, .done = 0, .total = 2, .fraction = 0.5}, false);
    sut->progress({.frame = 2, .done = 2, .total = 2}, true);
    sut->end({.exit = 0, .output = "a.mov", .frames = 2, .bytes = 2500, .seconds = 0.5});
    EXPECT_EQ(lines(), (Lines{"corvel: writing 2 frames of 64 x 36 pixels to a.mov",
                              "corvel: frame 2 (2 of 2), 0 bytes",
                              "corvel: wrote a.mov: 2 frames, 2.5 kB in 0.5 s (4.0 frames/s)"}));
}

TEST_F(ReporterTest, IsQuietAboutProgressWhenAskedFor) {
    const auto sut = createReporter(ProgressStyle::None, console);
    sut->start({.frames = 2, .width = 64, .height = 36, .output = "a.mov"});
    sut->progress({.frame = 2, .done = 2, .total = 2}, true);
    sut->end({.exit = 0, .output = "a.mov", .frames = 2, .bytes = 2500, .seconds = 0.5});
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(ReporterTest, WritesOneJsonObjectALineAndNothingElse) {
    const auto sut = createReporter(ProgressStyle::Json, console);
    sut->start({.frames = 2, .width = 64, .height = 36, .output = "a.mov"});
    sut->progress({.frame = 1001, .done = 0, .total = 2, .fraction = 0.3}, false);
    sut->progress(
        {.frame = 1001, .done = 1, .total = 2, .fraction = 0, .fps = 12.3456, .secondsLeft = 1, .bytes = 9},
        true);
    sut->message(MessageLevel::Warning, "say \"what\"\n");
    sut->helperLine("CorvelQuickTimeHelper-32: oh");
    sut->end({.exit = 3, .output = "", .frames = 1, .bytes = 0, .seconds = 0});

    std::vector<nlohmann::json> events;
    for (const std::string& line : lines()) {
        events.push_back(nlohmann::json::parse(line));
    }
    ASSERT_EQ(events.size(), 5u) << "parts of a frame are no event";
    EXPECT_EQ(events[0]["event"], "start");
    EXPECT_EQ(events[0]["total"], 2);
    EXPECT_EQ(events[1], nlohmann::json::parse(R"({"event": "frame", "frame": 1001, "done": 1, "total": 2,
                                                   "fps": 12.346, "bytes": 9, "seconds_left": 1.0})"));
    EXPECT_EQ(events[2]["event"], "message");
    EXPECT_EQ(events[2]["text"], "say \"what\"\n");
    EXPECT_EQ(events[3]["source"], "helper");
    EXPECT_EQ(events[4], nlohmann::json::parse(R"({"event": "end", "exit": 3, "output": null})"));
}

TEST_F(ReporterTest, WritesValidJsonForAnyBytes) {
    const auto sut = createReporter(ProgressStyle::Json, console);
    sut->message(MessageLevel::Error, "caf\xe9.exr");
    EXPECT_EQ(nlohmann::json::parse(lines().at(0))["text"], "caf\xef\xbf\xbd.exr");
}

class Terminal : public testing::Test {
protected:
    Terminal() {
        winsize size{24, 60, 0, 0};
        EXPECT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0);
    }
    ~Terminal() override {
        close(slave);
        close(master);
    }

    // What has come out since the last call, up to the first `end`. Terminals take their time.
    std::string shownUpTo(const std::string& end) {
        while (pending.find(end) == std::string::npos) {
            char bytes[4096];
            const ssize_t count = read(master, bytes, sizeof bytes);
            if (count <= 0) {
                return "nothing more after " + pending;
            }
            pending.append(bytes, static_cast<std::size_t>(count));
        }
        const std::size_t length = pending.find(end) + end.size();
        const std::string text = pending.substr(0, length);
        pending.erase(0, length);
        return text;
    }

    std::string pending;
    int master = -1;
    int slave = -1;
};

TEST_F(Terminal, ShowsABarInItsWidth) {
    Console console(slave);
    EXPECT_TRUE(console.isTerminal());
    EXPECT_EQ(console.columns(), 60);
    const auto sut = createReporter(ProgressStyle::Bar, console);
    sut->progress({.frame = 5, .done = 5, .total = 10}, true);
    const std::string text = shownUpTo("0 bytes");
    EXPECT_EQ(text.substr(0, 4), "\r\x1b[K");
    EXPECT_NE(text.find("[=="), std::string::npos) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
}

TEST_F(Terminal, PutsMessagesAboveTheBarAndTakesItAwayAtTheEnd) {
    Console console(slave);
    const auto sut = createReporter(ProgressStyle::Bar, console);
    sut->progress({.frame = 5, .done = 5, .total = 10}, true);
    const std::string bar = shownUpTo("0 bytes");
    sut->message(MessageLevel::Warning, "odd");
    EXPECT_EQ(shownUpTo("0 bytes"), "\r\x1b[Kcorvel: warning: odd\r\n" + bar.substr(4));
    sut->end({.exit = 0, .output = "a.mov", .frames = 10, .bytes = 1, .seconds = 1});
    EXPECT_EQ(shownUpTo("a.mov"), "\r\x1b[Kcorvel: wrote a.mov");
}

}  // namespace
}  // namespace Corvel
