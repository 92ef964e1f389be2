#include "host/farm/ChunkRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "host/farm/Program.h"
#include "host/farm/Tally.h"
#include "host/render/Interrupts.h"
#include "host/render/Reporter.h"

namespace Corvel {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

/// One render of a chunk.
class ChunkRun {
public:
    ChunkRun(const FarmPlace& place, const FarmState& state, int chunk)
        : place(place), state(state), chunk(chunk), part(place.partFile(chunk)) {
        tally.attempt = readTally(place, state, chunk).attempt + 1;
        tally.node = nodeName();
        tally.state = Tally::State::Running;
    }

    Exit run();

private:
    std::vector<std::string> words() const;
    void follow(int pipe, pid_t child);
    void takeLines();
    void takeEvent(const std::string& line);
    Exit finish(int exit);

    /// An engine that died asks for the end at once.
    int endRequests() const { return interrupts.count() + (getppid() == parent ? 0 : 3); }

    const FarmPlace& place;
    const FarmState& state;
    const int chunk;
    const std::string part;
    Tally tally;
    std::string unread;
    Interrupts interrupts;
    const pid_t parent = getppid();
    Pace pace{std::chrono::milliseconds(500)};
    const Clock::time_point start = Clock::now();
};

std::vector<std::string> ChunkRun::words() const {
    std::vector<std::string> words{state.program, "render", state.input};
    const auto add = [&](const std::vector<std::string>& more) {
        words.insert(words.end(), more.begin(), more.end());
    };
    add(state.options);
    add(chunk == 1 ? state.firstOptions : state.otherOptions);
    add({"--frames=" + state.chunks[static_cast<std::size_t>(chunk) - 1].frames, "--output=" + part,
         "--progress=json"});
    return words;
}

Exit ChunkRun::run() {
    writeTally(place, chunk, tally);
    if (!state.folder.empty() && chdir(state.folder.c_str()) != 0) {
        tally.error = fmt::format("there is no folder {}", state.folder);
        return finish(static_cast<int>(Exit::InputUnreadable));
    }
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw Failure(Exit::NodeFailed, "cannot make a pipe");
    }
    const pid_t child = startProgram(words(), pipe[1]);
    close(pipe[1]);
    follow(pipe[0], child);
    close(pipe[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return finish(exitOf(status));
}

void ChunkRun::follow(int pipe, pid_t child) {
    int told = 0;
    // Signals that come close together count as one.
    Pace asking{std::chrono::milliseconds(100)};
    while (true) {
        if (told < endRequests() && asking.due(Clock::now())) {
            kill(child, SIGTERM);
            ++told;
        }
        struct pollfd wait = {pipe, POLLIN, 0};
        constexpr int milliseconds = 100;
        if (poll(&wait, 1, milliseconds) <= 0) {
            continue;
        }
        std::array<char, 4096> block{};
        const ssize_t count = read(pipe, block.data(), block.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return;
        }
        unread.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        takeLines();
        if (pace.due(Clock::now())) {
            writeTally(place, chunk, tally);
        }
    }
}

void ChunkRun::takeLines() {
    for (std::size_t end = unread.find('\n'); end != std::string::npos; end = unread.find('\n')) {
        takeEvent(unread.substr(0, end));
        unread.erase(0, end + 1);
    }
}

void ChunkRun::takeEvent(const std::string& line) {
    const Json event = Json::parse(line, nullptr, false);
    if (!event.is_object()) {
        fmt::print(stderr, "{}\n", line);
        return;
    }
    if (event.value("event", "") == "frame") {
        tally.done = event.value("done", 0);
        tally.bytes = event.value("bytes", std::uint64_t{0});
    } else if (event.value("event", "") == "message") {
        const std::string text = event.value("text", "");
        fmt::print(stderr, "{}\n", text);
        if (event.value("level", "") == "error") {
            tally.error += (tally.error.empty() ? "" : "; ") + text;
        }
    }
}

Exit ChunkRun::finish(int exit) {
    std::error_code error;
    tally.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (exit == 0) {
        std::filesystem::rename(part, place.chunkFile(chunk), error);
        tally.state = error ? Tally::State::Failed : Tally::State::Done;
        tally.error = error ? fmt::format("cannot rename {}: {}", part, error.message()) : "";
    } else {
        // First of all, so that a full disk has room for the reason. What is cut short may be of no use to
        // anybody: the next attempt begins anew.
        std::filesystem::remove(part, error);
        tally.state = endRequests() > 0 ? Tally::State::Waiting : Tally::State::Failed;
        tally.error = tally.error.empty() ? fmt::format("corvel render ended with {}", exit) : tally.error;
    }
    writeTally(place, chunk, tally);
    if (tally.state == Tally::State::Failed) {
        fmt::print(stderr, "corvel: {} failed on {}\n", chunkText(state, chunk), tally.node);
    }
    return tally.state == Tally::State::Done ? Exit::Done
           : endRequests() > 0               ? Exit::Interrupted
                                             : Exit::NodeFailed;
}

const char* variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Slurm ends this process and starts the job again later, perhaps on another machine.
void putBackIntoQueue(const FarmState& state) {
    if (*variable("SLURM_ARRAY_JOB_ID") == '\0' ||
        std::atoi(variable("SLURM_RESTART_COUNT")) >= state.retries) {
        return;
    }
    const std::string job =
        fmt::format("{}_{}", variable("SLURM_ARRAY_JOB_ID"), variable("SLURM_ARRAY_TASK_ID"));
    if (runProgram({"scontrol", "requeue", job}).exit == 0) {
        constexpr auto untilEnded = std::chrono::seconds(60);
        std::this_thread::sleep_for(untilEnded);
    }
}

}  // namespace

Exit runChunk(const FarmPlace& place, const FarmState& state, int chunk) {
    if (chunk < 1 || chunk > static_cast<int>(state.chunks.size())) {
        throw Failure(Exit::Usage, fmt::format("there is no chunk {} of {}", chunk, place.output()));
    }
    const Exit exit = ChunkRun(place, state, chunk).run();
    if (exit == Exit::NodeFailed) {
        putBackIntoQueue(state);
    }
    return exit;
}

}  // namespace Corvel
