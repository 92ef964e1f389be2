#include "host/farm/SlurmFarm.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "host/farm/SlurmJobs.h"
#include "host/farm/Tally.h"
#include "host/images/FrameRange.h"
#include "host/render/Interrupts.h"

namespace Corvel {
namespace {

constexpr const char* joinLog = "join";

std::vector<std::string> options(const FarmPlace& place, const FarmState& state, const std::string& log,
                                 const std::vector<std::string>& more) {
    const std::string name = std::filesystem::path(place.output()).filename().string();
    std::vector<std::string> words{"--job-name=corvel " + name, "--output=" + place.logFile(log),
                                   "--open-mode=append", "--chdir=" + state.folder};
    words.insert(words.end(), more.begin(), more.end());
    words.insert(words.end(), state.submitOptions.begin(), state.submitOptions.end());
    return words;
}

std::string command(const FarmPlace& place, const FarmState& state, const std::string& action) {
    return fmt::format("exec {} farm {} {}", quoted(state.program), action, quoted(place.output()));
}

/// A job that begins when all of `before` have ended well; Slurm drops it when one has not.
std::string submitJoin(const FarmPlace& place, const FarmState& state,
                       const std::vector<std::string>& before) {
    std::vector<std::string> more;
    if (!before.empty()) {
        std::string dependency = "--dependency=afterok";
        for (const std::string& job : before) {
            dependency += ":" + job;
        }
        more = {dependency, "--kill-on-invalid-dep=yes"};
    }
    return submitJob(options(place, state, joinLog, more), command(place, state, "finish"));
}

std::vector<std::string> allJobs(const FarmState& state) {
    std::vector<std::string> jobs = state.chunkJobs;
    if (!state.joinJob.empty()) {
        jobs.push_back(state.joinJob);
    }
    return jobs;
}

/// `running` are tasks of earlier jobs that the join waits for too.
void submitJobs(const FarmPlace& place, FarmState& state, const std::vector<int>& missing,
                std::vector<std::string> running) {
    // Before the jobs: the first of them may read it at once.
    saveState(place, state);
    if (!missing.empty()) {
        const std::string job =
            submitJob(options(place, state, "%a", {"--array=" + frameRangeText(missing), "--requeue"}),
                      command(place, state, "chunk --chunk=$SLURM_ARRAY_TASK_ID"));
        state.chunkJobs.push_back(job);
        running.push_back(job);
        saveState(place, state);
        fmt::print("chunks {}: job {}\n", frameRangeText(missing), job);
    }
    state.joinJob = submitJoin(place, state, running);
    saveState(place, state);
    fmt::print("join: job {}\n", state.joinJob);
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void tellFailure(const FarmPlace& place, const FarmState& state) {
    const std::vector<Tally> tallies = readTallies(place, state);
    for (const std::string& text : failureTexts(state, tallies)) {
        spdlog::error(text);
    }
    for (std::size_t i = 0; i < tallies.size(); ++i) {
        if (tallies[i].state == Tally::State::Running) {
            spdlog::error("{} was cut off on {}", chunkText(state, static_cast<int>(i) + 1), tallies[i].node);
        }
    }
    if (const std::string said = contentsOf(place.logFile(joinLog)); !said.empty()) {
        spdlog::error(said);
    }
    spdlog::error("{} is not whole; corvel farm resume renders what is missing", place.output());
}

}  // namespace

void submitToSlurm(const FarmPlace& place, FarmState& state, const std::vector<int>& missing) {
    try {
        submitJobs(place, state, missing, {});
    } catch (const Failure&) {
        endJobs(allJobs(state));
        place.removeAllButChunks();
        throw;
    }
}

void resumeOnSlurm(const FarmPlace& place, FarmState& state) {
    std::vector<std::string> ended, kept;
    std::vector<int> running;
    for (const SlurmJob& job : liveJobs(allJobs(state))) {
        const bool goesOn = job.running && job.task() > 0;
        (goesOn ? kept : ended).push_back(job.id);
        if (goesOn) {
            running.push_back(job.task());
        }
    }
    endJobs(ended);
    std::error_code ignored;
    std::filesystem::remove(place.logFile(joinLog), ignored);
    submitJobs(place, state, missingChunks(place, state, running), kept);
}

void cancelJobs(const FarmState& state) {
    endJobs(allJobs(state));
}

bool isAlive(const FarmState& state) {
    return !liveJobs(allJobs(state)).empty();
}

Exit followSlurm(const FarmPlace& place, const FarmState& state, Reporter& reporter) {
    const Interrupts interrupts;
    FarmProgress progress(place, state, reporter);
    bool alive = true;
    while (true) {
        progress.update();
        // In this order: the join may end between the two looks.
        const bool wasAlive = std::exchange(alive, isAlive(state));
        if (!stateExists(place)) {
            return progress.end(std::filesystem::exists(place.output()) ? Exit::Done : Exit::NodeFailed);
        }
        if (!wasAlive && !alive) {
            tellFailure(place, state);
            return progress.end(Exit::NodeFailed);
        }
        if (interrupts.count() > 0) {
            spdlog::warn("the render goes on; corvel farm cancel {} ends it", place.output());
            return progress.end(Exit::Interrupted);
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

}  // namespace Corvel
