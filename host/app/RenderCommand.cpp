#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <optional>

#include "host/app/Command.h"
#include "host/app/FarmOptions.h"
#include "host/app/ProgressOption.h"
#include "host/app/ShotOptions.h"
#include "host/app/SoundCheck.h"
#include "host/app/StartUp.h"
#include "host/render/Render.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Examples:\n"
    "  corvel render 'shot.####.exr' -o shot.mov\n"
    "  corvel render shot.%04d.exr -o shot.mov --codec 'prores 4444' --frames 1001-1100\n"
    "  corvel render 'shot.####.png' -o shot.mov --codec h.264 --quality high --fps 23.976 --audio mix.wav\n"
    "  corvel render 'shot.####.dpx' -o shot.mov --codec apch --timecode 01:00:00:00 --reel A001\n"
    "  corvel render 'shot_%V.####.exr' -o right.mov --stereo-view right --layer diffuse\n"
    "  corvel render shot.mov -o 'shot.####.exr' --frames 1-24\n"
    "  corvel render 'shot.####.exr' -o shot.mov --farm local --jobs 4\n"
    "\n"
    "A pattern holds the frame number as %04d or as one # or @ a digit; quote it, so that the shell leaves "
    "it alone.\n"
    "Ctrl-C once lets the running frame end and keeps the movie so far; twice gives up the frame; three "
    "times gives up\n"
    "everything at once.\n"
    "\n"
    "Exit codes: 0 done, 1 the Write node reported an error, 2 usage, 3 an input is missing or unreadable, 4 "
    "the\n"
    "QuickTime helper is missing or died, 130 interrupted.";

class RenderCommand : public Command {
public:
    std::string name() const override { return "render"; }
    std::string summary() const override { return "Write frames to a QuickTime movie, or a movie to images"; }
    void declare(CLI::App& app) override;
    Exit run(Session& session) override;

private:
    void declareFiles(CLI::App& app);
    void declareRunning(CLI::App& app);

    RenderRequest request;
    FarmRequest farm;
    const CLI::App* options = nullptr;
    std::string preset;
    std::optional<ProgressStyle> progress;
};

void RenderCommand::declare(CLI::App& app) {
    options = &app;
    declareFiles(app);
    declareShotOptions(app, "render", request, preset);
    app.add_flag("--advanced", request.advanced,
                 "Show the codec's own settings dialog first, once all other settings are made")
        ->group("Codec");
    declareRunning(app);
    declareFarmOptions(app, farm);
    app.footer(footer);
}

void RenderCommand::declareFiles(CLI::App& app) {
    app.add_option(
           "INPUT", request.input,
           "Image sequence (shot.####.exr, shot.%04d.exr), one still, or a movie; %V stands for a stereo view")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", request.output,
                   "The movie to write, whose name ends in .mov; or images (shot.####.exr; .dpx, .png, .tif)")
        ->required()
        ->type_name("OUTPUT");
    app.add_flag(
        "-y,--overwrite", request.overwrite,
        "Replace an existing movie, once the new one is whole, or existing images (default: refuse)");
}

void RenderCommand::declareRunning(CLI::App& app) {
    constexpr const char* group = "Running";
    app.add_flag("-n,--dry-run", request.dryRun, "Check everything, say what would be done, write nothing")
        ->group(group);
    app.add_option("--threads", request.threads, "Threads that read and encode (default: one a processor)")
        ->check(CLI::Range(1, 256).description(""))
        ->type_name("N")
        ->group(group);
    app.add_option_function<int>(
           "--helper-timeout", [this](int seconds) { request.helperTimeout = std::chrono::seconds(seconds); },
           "Give up when the QuickTime helper makes no progress for so long (default: wait and say so)")
        ->check(CLI::Range(1, 1'000'000).description(""))
        ->type_name("SECONDS")
        ->group(group);
    declareProgressOption(app, progress, group);
}

Exit RenderCommand::run(Session& session) {
    useProgress(session, progress);
    settleKnobs(request, preset);
    checkSounds(request.knobs, Bundle().contents() + "/Resources/corvel-movie");
    if (!farm.engine.empty()) {
        return renderInChunks(*options, request, farm, *session.reporter);
    }
    startUp();
    return render(request, *session.reporter);
}

}  // namespace

std::unique_ptr<Command> renderCommand() {
    return std::make_unique<RenderCommand>();
}

}  // namespace Corvel
