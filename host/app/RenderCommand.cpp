#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <optional>

#include "host/app/BurnInOptions.h"
#include "host/app/ColourOptions.h"
#include "host/app/Command.h"
#include "host/app/FarmOptions.h"
#include "host/app/FrameOptions.h"
#include "host/app/GeometryOptions.h"
#include "host/app/KnobOptions.h"
#include "host/app/ProgressOption.h"
#include "host/app/SoundCheck.h"
#include "host/app/StartUp.h"
#include "host/presets/PresetStore.h"
#include "host/render/Curves.h"
#include "host/render/Render.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Examples:\n"
    "  corvel render 'shot.####.exr' -o shot.mov\n"
    "  corvel render shot.%04d.exr -o shot.mov --codec 'prores 4444' --frames 1001-1100\n"
    "  corvel render 'shot.####.png' -o shot.mov --codec h.264 --quality high --fps 23.976 --audio mix.wav\n"
    "  corvel render 'shot.####.dpx' -o shot.mov --codec apch --timecode 01:00:00:00 --reel A001\n"
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

std::pair<std::string, std::string> parsePair(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw CLI::ValidationError("--metadata", fmt::format("\"{}\" is not of the form KEY=VALUE", text));
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

class RenderCommand : public Command {
public:
    std::string name() const override { return "render"; }
    std::string summary() const override { return "Write frames to a QuickTime movie, or a movie to images"; }
    void declare(CLI::App& app) override;
    Exit run(Session& session) override;

private:
    void declareFiles(CLI::App& app);
    void declarePicture(CLI::App& app);
    void declareMetadata(CLI::App& app);
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
    declareFrameOptions(app, "render", request.frames, request.missing);
    declareOrderOptions(app, request.order);
    app.add_option("--preset", preset,
                   "Start from the knob values of that preset, as `corvel presets list` names them")
        ->type_name("NAME")
        ->group("Codec");
    declareKnobOptions(app, request.knobs);
    app.add_flag("--advanced", request.advanced,
                 "Show the codec's own settings dialog first, once all other settings are made")
        ->group("Codec");
    declarePicture(app);
    declareGeometryOptions(app, request.format, request.geometry);
    declareColourOptions(app, request.colour);
    declareBurnInOptions(app, request.burnIns);
    declareMetadata(app);
    declareRunning(app);
    declareFarmOptions(app, farm);
    app.footer(footer);
}

void RenderCommand::declareFiles(CLI::App& app) {
    app.add_option("INPUT", request.input,
                   "Image sequence (shot.####.exr, shot.%04d.exr), one still, or a movie")
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

void RenderCommand::declarePicture(CLI::App& app) {
    constexpr const char* group = "Picture";
    const std::map<std::string, int> channels{{"rgb", 3}, {"rgba", 4}};
    app.add_option("--channels", request.channels, "rgb or rgba (default: what the input has)")
        ->transform(CLI::CheckedTransformer(channels, CLI::ignore_case).description(""))
        ->type_name("WHICH")
        ->group(group);
    const std::string curves = curveNames();
    app.add_option("--lut", request.lut,
                   fmt::format("Curve of the movie's values: {} (default: srgb)", curves))
        ->type_name("NAME")
        ->group(group);
    app.add_option(
           "--input-lut", request.inputLut,
           "Curve of the input's values (default: what the files say, else linear for floats, srgb for "
           "integers)")
        ->type_name("NAME")
        ->group(group);
}

void RenderCommand::declareMetadata(CLI::App& app) {
    constexpr const char* group = "Time code and metadata";
    app.add_option("--timecode", request.timecode,
                   "Time code of the first frame; turns the time-code track on (default: the input's)")
        ->type_name("HH:MM:SS:FF")
        ->group(group);
    app.add_option("--reel", request.reel, "Reel name of the time-code track (default: the input's)")
        ->type_name("NAME")
        ->group(group);
    app.add_option_function<std::vector<std::string>>(
           "--metadata",
           [this](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   request.metadata.push_back(parsePair(text));
               }
           },
           "Metadata of the movie, such as title=Opening; may be given several times")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false)
        ->group(group);
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
    if (!preset.empty()) {
        request.knobs = onTopOf(presetStore(Bundle().contents()).load(preset), request.knobs);
    }
    checkKnobFiles(request.knobs);
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
