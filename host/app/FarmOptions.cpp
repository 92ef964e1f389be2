#include "host/app/FarmOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "host/app/GivenOptions.h"
#include "host/app/KnobOptions.h"
#include "host/farm/ChunkPlan.h"
#include "host/images/ImageSequence.h"
#include "host/movies/MovieSource.h"
#include "host/render/RenderImages.h"

namespace Corvel {
namespace {

constexpr const char* group = "Farm";
constexpr int mostChunks = 1000;
constexpr int usualChunkFrames = 100;

/// Each chunk has its own of these, or none at all.
const std::set<std::string> chunksOwn = {
    "--frames", "--handles",      "--step",         "--output",   "--overwrite", "--progress",
    "--farm",   "--chunks",       "--chunk-frames", "--jobs",     "--wait",      "--partition",
    "--sbatch", "--farm-retries", "--audiofile",    "--timecode", "--reel",      "--writeTimeCode"};

/// The value that counts among those given for a knob; the empty text where there is none.
std::string knobText(const RenderRequest& request, const std::string& knob) {
    const auto last = std::find_if(request.knobs.rbegin(), request.knobs.rend(),
                                   [&](const KnobSetting& setting) { return setting.knob == knob; });
    return last == request.knobs.rend() ? "" : last->text;
}

bool isOff(const std::string& text) {
    return text == "off" || text == "no" || text == "false" || text == "0";
}

bool countsFrames(const std::string& units) {
    return !units.empty() && (units.front() == 'f' || units.front() == 'F' || units == "1");
}

/// As the movie writer works it out, with its precision.
std::vector<std::string> soundOptions(const RenderRequest& request) {
    const std::string file = knobText(request, audioKnob);
    if (file.empty()) {
        return {};
    }
    std::vector<std::string> words{"--audio=" + std::filesystem::absolute(file).string()};
    const std::string text = knobText(request, "audio_offset");
    const float offset = std::strtof(text.c_str(), nullptr);
    const float rate = std::strtof(knobText(request, "fps").c_str(), nullptr);
    const bool inFrames = countsFrames(knobText(request, "units"));
    if (inFrames && rate > 0) {
        words.push_back(fmt::format("--audio-offset={:.9g}", offset / rate));
    } else if (!text.empty()) {
        words.push_back(fmt::format("--audio-offset={:.9g}", offset));
        words.push_back(inFrames ? "--audio-units=frames" : "--audio-units=seconds");
    }
    return words;
}

int framesEach(const FarmRequest& farm, int frames) {
    if (farm.chunkFrames > 0) {
        return farm.chunkFrames;
    }
    const int chunks = farm.chunks > 0
                           ? farm.chunks
                           : std::min(mostChunks, (frames + usualChunkFrames - 1) / usualChunkFrames);
    return std::max(1, (frames + chunks - 1) / std::max(1, chunks));
}

int processors() {
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

std::vector<std::string> submitOptions(const FarmRequest& farm) {
    std::vector<std::string> words;
    if (!farm.submitOptions.empty()) {
        words = CLI::detail::split_up(farm.submitOptions);
        for (std::string& word : words) {
            CLI::detail::remove_quotes(word);
        }
    }
    if (!farm.partition.empty()) {
        words.push_back("--partition=" + farm.partition);
    }
    return words;
}

void refuseWhatCannotBe(const RenderRequest& request) {
    if (isMovieName(request.input)) {
        throw Failure(Exit::Usage, "--farm renders image sequences, not movies");
    }
    if (writesImages(request.output)) {
        throw Failure(Exit::Usage, "--farm renders movies, not images");
    }
    if (request.advanced) {
        throw Failure(Exit::Usage, "--farm goes without --advanced: nobody is at the dialog");
    }
    const BurnInRequest& written = request.burnIns;
    if (!written.slate.empty() || !written.burnIn.empty() || !written.texts.empty()) {
        throw Failure(Exit::Usage, "--farm goes without slate and burn-ins: a chunk does not know the movie");
    }
    if (std::filesystem::exists(request.output) && !request.overwrite && !request.dryRun) {
        throw Failure(Exit::Usage, fmt::format("{} exists already; -y replaces it", request.output));
    }
}

/// Of the time code: the first chunk has the movie's own, and the join takes it from there.
void addTimecode(const RenderRequest& request, FarmState& state) {
    if (!request.timecode.empty()) {
        state.firstOptions.push_back("--timecode=" + request.timecode);
    }
    if (!request.reel.empty()) {
        state.firstOptions.push_back("--reel=" + request.reel);
    }
    if (const std::string write = knobText(request, "writeTimeCode"); !write.empty()) {
        state.firstOptions.push_back("--knob=writeTimeCode=" + write);
    }
    state.otherOptions.emplace_back("--knob=writeTimeCode=off");
}

FarmState stateOf(const CLI::App& app, const RenderRequest& request, const FarmRequest& farm) {
    FarmState state;
    state.engine = farm.engine;
    state.program = std::filesystem::read_symlink("/proc/self/exe").string();
    state.folder = std::filesystem::current_path().string();
    state.input = request.input;
    state.options = givenOptions(app, chunksOwn);
    state.options.emplace_back(fmt::format("--knob={}=", audioKnob));
    addTimecode(request, state);
    state.joinOptions = soundOptions(request);
    state.joinOptions.emplace_back(isOff(knobText(request, "Flatten")) ? "--no-fast-start" : "--fast-start");
    if (request.overwrite) {
        state.joinOptions.emplace_back("--overwrite");
    }
    state.retries = farm.retries;
    state.jobs = farm.jobs > 0 ? farm.jobs : std::max(1, processors() / 2);
    state.submitOptions = submitOptions(farm);
    return state;
}

void printChunks(const FarmState& state) {
    fmt::print("{} frames in {} chunks\n", state.frames(), state.chunks.size());
    for (int chunk = 1; chunk <= static_cast<int>(state.chunks.size()); ++chunk) {
        fmt::print("{}\n", chunkText(state, chunk));
    }
}

}  // namespace

void declareFarmOptions(CLI::App& app, FarmRequest& farm) {
    const CLI::Range positive(1, 10'000'000);
    const auto number = [&](const std::string& name, int& value, const std::string& help) {
        app.add_option(name, value, help)
            ->check(CLI::Range(positive).description(""))
            ->type_name("N")
            ->group(group);
    };
    app.add_option(
           "--farm", farm.engine,
           "Render in chunks: local, as processes of this machine, or slurm, on a cluster; codecs such as "
           "H.264 begin each with a key frame, which makes the movie a little larger")
        ->check(CLI::IsMember(std::vector<std::string>{"local", "slurm"}).description(""))
        ->type_name("ENGINE")
        ->group(group);
    number("--chunk-frames", farm.chunkFrames, "Frames of a chunk (default: 100)");
    number("--chunks", farm.chunks, "How many chunks, instead");
    number("--jobs", farm.jobs, "Chunks at the same time, with local (default: one for two processors)");
    app.add_option("--farm-retries", farm.retries, "How often a chunk that fails is tried again (default: 1)")
        ->check(CLI::Range(0, 100).description(""))
        ->type_name("N")
        ->group(group);
    app.add_flag("--wait", farm.wait, "With slurm: show progress until the movie is whole")->group(group);
    app.add_option("--partition", farm.partition, "Slurm's partition")->type_name("NAME")->group(group);
    app.add_option("--sbatch", farm.submitOptions, "More options for Slurm's sbatch")
        ->type_name("OPTIONS")
        ->group(group);
}

Exit renderInChunks(const CLI::App& app, const RenderRequest& request, const FarmRequest& farm,
                    Reporter& reporter) {
    refuseWhatCannotBe(request);
    const ImageSequence source(request.input, nullptr, request.choice);
    FarmState state = stateOf(app, request, farm);
    state.chunks = planChunks(source, request, framesEach(farm, framesOf(source, request)));
    if (static_cast<int>(state.chunks.size()) > mostChunks) {
        throw Failure(Exit::Usage, fmt::format("{} chunks are too many; there are at most {}",
                                               state.chunks.size(), mostChunks));
    }
    const PictureHeader header = source.header(source.frames().front());
    state.width = request.format ? request.format->width : header.display.width;
    state.height = request.format ? request.format->height : header.display.height;
    if (request.threads == 0 && farm.engine == "local") {
        state.options.push_back(fmt::format("--threads={}", std::max(1, processors() / state.jobs)));
    }
    if (request.dryRun) {
        printChunks(state);
        reporter.end({});
        return Exit::Done;
    }
    return submit(FarmPlace(request.output), state, farm.wait, reporter);
}

}  // namespace Corvel
