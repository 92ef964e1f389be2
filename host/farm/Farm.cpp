#include "host/farm/Farm.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>

#include "filesystem/FileSystem.h"
#include "host/farm/LocalFarm.h"
#include "host/farm/Program.h"
#include "host/farm/SlurmFarm.h"
#include "host/farm/Tally.h"
#include "host/render/Bundle.h"

namespace Corvel {
namespace {

constexpr const char* slurm = "slurm";

std::string movieTool() {
    return Bundle().contents() + "/Resources/corvel-movie";
}

std::string countsOf(const FarmState& state, const std::vector<int>& chunks) {
    std::string counts;
    for (const int chunk : chunks) {
        counts += fmt::format("{}{}", counts.empty() ? "" : ",",
                              state.chunks[static_cast<std::size_t>(chunk) - 1].count);
    }
    return counts;
}

/// Lines "2<tab>holds 5 frames, not 6", each about a place in `checked`.
std::vector<int> removeBad(const FarmPlace& place, const FarmState& state, const std::vector<int>& checked,
                           const std::string& lines) {
    std::vector<int> bad;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t tab = line.find('\t');
        const auto index = static_cast<std::size_t>(std::atoi(line.c_str()));
        if (tab == std::string::npos || index >= checked.size()) {
            continue;
        }
        const int chunk = checked[index];
        spdlog::warn("{} is rendered again: {}", chunkText(state, chunk), line.substr(tab + 1));
        std::error_code ignored;
        std::filesystem::remove(place.chunkFile(chunk), ignored);
        bad.push_back(chunk);
    }
    return bad;
}

bool contains(const std::vector<int>& numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

int doneChunks(const std::vector<Tally>& tallies) {
    return static_cast<int>(std::count_if(tallies.begin(), tallies.end(), [](const Tally& tally) {
        return tally.state == Tally::State::Done;
    }));
}

int doneFrames(const std::vector<Tally>& tallies) {
    int done = 0;
    for (const Tally& tally : tallies) {
        done += tally.state == Tally::State::Running || tally.state == Tally::State::Done ? tally.done : 0;
    }
    return done;
}

void printChunks(const FarmState& state, const std::vector<Tally>& tallies) {
    for (std::size_t i = 0; i < tallies.size(); ++i) {
        if (tallies[i].state == Tally::State::Running) {
            fmt::print("  {}: {} of {} frames on {}, attempt {}\n", chunkText(state, static_cast<int>(i) + 1),
                       tallies[i].done, state.chunks[i].count, tallies[i].node, tallies[i].attempt);
        }
    }
    for (const std::string& text : failureTexts(state, tallies)) {
        fmt::print("  {}\n", text);
    }
}

void tellWhatIsLeft(const FarmPlace& place) {
    if (Morvane::FileSystem::exists(place.folder())) {
        fmt::print("cancelled; the finished chunks are in {}\n", place.folder());
    } else {
        fmt::print("cancelled; no chunk was finished\n");
    }
}

void stopLocalEngine(const FarmPlace& place, const FarmState& state) {
    if (state.node != nodeName()) {
        throw Failure(Exit::Usage,
                      fmt::format("{} is rendered by {}: cancel it there", place.output(), state.node));
    }
    if (const auto pid = FarmLock::holder(place)) {
        kill(*pid, SIGTERM);
    }
}

}  // namespace

std::vector<int> missingChunks(const FarmPlace& place, const FarmState& state,
                               const std::vector<int>& skipped) {
    std::vector<int> missing, there;
    for (int chunk = 1; chunk <= static_cast<int>(state.chunks.size()); ++chunk) {
        if (!contains(skipped, chunk)) {
            (Morvane::FileSystem::exists(place.chunkFile(chunk)) ? there : missing).push_back(chunk);
        }
    }
    if (!there.empty()) {
        std::vector<std::string> words{movieTool(), "check", "--frames=" + countsOf(state, there), "--"};
        for (const int chunk : there) {
            words.push_back(place.chunkFile(chunk));
        }
        const std::vector<int> bad = removeBad(place, state, there, runProgram(words).output);
        missing.insert(missing.end(), bad.begin(), bad.end());
    }
    std::sort(missing.begin(), missing.end());
    missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
    return missing;
}

Exit joinChunks(const FarmPlace& place, const FarmState& state) {
    std::vector<std::string> words{movieTool(), "join", "--output=" + place.output()};
    words.insert(words.end(), state.joinOptions.begin(), state.joinOptions.end());
    std::vector<int> all;
    for (int chunk = 1; chunk <= static_cast<int>(state.chunks.size()); ++chunk) {
        all.push_back(chunk);
    }
    words.push_back("--frames=" + countsOf(state, all));
    words.emplace_back("--");
    for (const int chunk : all) {
        words.push_back(place.chunkFile(chunk));
    }
    std::error_code ignored;
    std::filesystem::current_path(state.folder, ignored);
    const Finished joined = runProgram(words);
    if (joined.exit != 0) {
        spdlog::error("{} was not joined: {}", place.output(), joined.errors);
        return Exit::NodeFailed;
    }
    place.removeAll();
    return Exit::Done;
}

FarmProgress::FarmProgress(const FarmPlace& farmPlace, const FarmState& farmState, Reporter& told)
    : place(farmPlace), state(farmState), reporter(told) {
    reporter.start({state.frames(), state.width, state.height, place.output()});
}

void FarmProgress::update() {
    const std::vector<Tally> tallies = readTallies(place, state);
    const int done = std::min(doneFrames(tallies), state.frames());
    before = before < 0 ? done : before;
    if (done == told) {
        return;
    }
    told = done;
    FrameProgress progress;
    progress.frame = done;
    progress.done = done;
    progress.total = state.frames();
    for (const Tally& tally : tallies) {
        progress.bytes += tally.bytes;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (done > before && seconds > 0) {
        progress.fps = (done - before) / seconds;
        progress.secondsLeft = (progress.total - done) / *progress.fps;
    }
    reporter.progress(progress, true);
}

Exit FarmProgress::end(Exit exit) {
    const bool whole = exit == Exit::Done;
    RenderEnd last{
        .exit = static_cast<int>(exit), .output = whole ? place.output() : "", .frames = state.frames()};
    last.bytes = whole ? Morvane::FileSystem::fileSize(place.output()) : 0;
    last.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    reporter.end(last);
    return exit;
}

Exit submit(const FarmPlace& place, FarmState state, bool wait, Reporter& reporter) {
    state.node = nodeName();
    std::optional<FarmLock> lock(std::in_place, place, 0);
    if (stateExists(place)) {
        throw Failure(Exit::Usage,
                      fmt::format("{} is being rendered in chunks already; corvel farm status, resume "
                                  "or cancel {}",
                                  place.output(), place.output()));
    }
    if (state.engine != slurm) {
        saveState(place, state);
        return runLocalFarm(place, state, missingChunks(place, state, {}), reporter);
    }
    submitToSlurm(place, state, missingChunks(place, state, {}));
    lock.reset();
    return wait ? followSlurm(place, state, reporter) : Exit::Done;
}

Exit farmStatus(const FarmPlace& place) {
    if (!stateExists(place) && Morvane::FileSystem::exists(place.output())) {
        fmt::print("{}: done, nothing is under way\n", place.output());
        return Exit::Done;
    }
    const FarmState state = loadState(place);
    const std::vector<Tally> tallies = readTallies(place, state);
    const bool alive = state.engine == slurm ? isAlive(state) : FarmLock::holder(place).has_value();
    fmt::print("{}: {} of {} chunks, {} of {} frames, {}\n", place.output(), doneChunks(tallies),
               state.chunks.size(), doneFrames(tallies), state.frames(),
               alive ? "under way" : "not under way; corvel farm resume goes on");
    printChunks(state, tallies);
    return Exit::Done;
}

Exit farmCancel(const FarmPlace& place) {
    const FarmState state = loadState(place);
    if (state.engine == slurm) {
        cancelJobs(state);
    } else {
        stopLocalEngine(place, state);
    }
    constexpr int secondsToEnd = 60;
    const FarmLock lock(place, secondsToEnd);
    place.removeAllButChunks();
    tellWhatIsLeft(place);
    return Exit::Done;
}

Exit farmResume(const FarmPlace& place, bool wait, Reporter& reporter) {
    FarmState state = loadState(place);
    std::optional<FarmLock> lock(std::in_place, place, 0);
    if (state.engine != slurm) {
        const std::vector<int> missing = missingChunks(place, state, {});
        spdlog::info("{} of {} chunks are rendered", missing.size(), state.chunks.size());
        state.node = nodeName();
        saveState(place, state);
        return runLocalFarm(place, state, missing, reporter);
    }
    resumeOnSlurm(place, state);
    lock.reset();
    return wait ? followSlurm(place, state, reporter) : Exit::Done;
}

Exit farmFinish(const FarmPlace& place) {
    // The submitter may still be writing down which jobs it has submitted.
    constexpr int secondsForTheSubmitter = 60;
    const FarmLock lock(place, secondsForTheSubmitter);
    return joinChunks(place, loadState(place));
}

}  // namespace Corvel
