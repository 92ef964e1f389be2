#include "host/farm/LocalFarm.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <deque>
#include <map>
#include <thread>

#include "host/farm/Program.h"
#include "host/farm/Tally.h"
#include "host/render/Interrupts.h"

namespace Corvel {
namespace {

/// The processes of one run.
class LocalFarm {
public:
    LocalFarm(const FarmPlace& farmPlace, const FarmState& farmState, const std::vector<int>& missing,
              Reporter& reporter)
        : place(farmPlace),
          state(farmState),
          waiting(missing.begin(), missing.end()),
          progress(place, state, reporter) {}

    Exit run();

private:
    void start(int chunk);
    void reap();
    void took(int chunk, int exit);
    void passInterruptsOn();

    const FarmPlace& place;
    const FarmState& state;
    std::deque<int> waiting;
    std::map<pid_t, int> running;  ///< chunks by their processes
    std::map<int, int> failures;   ///< how often a chunk has failed
    bool failed = false;
    int passedOn = 0;
    Interrupts interrupts;
    FarmProgress progress;
};

Exit LocalFarm::run() {
    while (!running.empty() || (!waiting.empty() && interrupts.count() == 0)) {
        while (!waiting.empty() && static_cast<int>(running.size()) < state.jobs && interrupts.count() == 0) {
            start(waiting.front());
            waiting.pop_front();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        passInterruptsOn();
        reap();
        progress.update();
    }
    if (interrupts.count() > 0) {
        spdlog::error("interrupted; corvel farm resume {} goes on, corvel farm cancel clears up",
                      place.output());
        return progress.end(Exit::Interrupted);
    }
    if (failed) {
        for (const std::string& text : failureTexts(state, readTallies(place, state))) {
            spdlog::error(text);
        }
        spdlog::error("corvel farm resume {} tries again", place.output());
        return progress.end(Exit::NodeFailed);
    }
    return progress.end(joinChunks(place, state));
}

void LocalFarm::start(int chunk) {
    const int log =
        open(place.logFile(std::to_string(chunk)).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    running[startProgram({state.program, "farm", "chunk", place.output(), fmt::format("--chunk={}", chunk)},
                         log < 0 ? STDERR_FILENO : log)] = chunk;
    close(log);
}

void LocalFarm::reap() {
    for (auto child = running.begin(); child != running.end();) {
        int status = 0;
        if (waitpid(child->first, &status, WNOHANG) == child->first) {
            took(child->second, exitOf(status));
            child = running.erase(child);
        } else {
            ++child;
        }
    }
}

void LocalFarm::took(int chunk, int exit) {
    if (exit == 0 || interrupts.count() > 0) {
        return;
    }
    Tally tally = readTally(place, state, chunk);
    if (tally.state == Tally::State::Running) {
        // It was ended before it could say so itself.
        tally.state = Tally::State::Failed;
        tally.error = fmt::format("its process ended with {}", exit);
        writeTally(place, chunk, tally);
    }
    if (++failures[chunk] <= state.retries) {
        spdlog::warn("{} failed on {} and is tried again: {}", chunkText(state, chunk), tally.node,
                     tally.error);
        waiting.push_back(chunk);
    } else {
        failed = true;
    }
}

void LocalFarm::passInterruptsOn() {
    for (; passedOn < interrupts.count(); ++passedOn) {
        for (const auto& [pid, chunk] : running) {
            kill(pid, SIGTERM);
        }
    }
}

}  // namespace

Exit runLocalFarm(const FarmPlace& place, const FarmState& state, const std::vector<int>& missing,
                  Reporter& reporter) {
    return LocalFarm(place, state, missing, reporter).run();
}

}  // namespace Corvel
