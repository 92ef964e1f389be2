#include "host/app/Command.h"
#include "host/app/ShotOptions.h"
#include "host/app/StartUp.h"
#include "host/render/Look.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Examples:\n"
    "  corvel look 'shot.####.exr' --frame 1001 -o still.png --display 'sRGB - Display' --view Filmic\n"
    "  corvel look 'shot.####.exr' -o slate.png --slate default --format 1920x1080 --fit inside\n"
    "  corvel look 'shot.####.exr' -o lossy.png --codec h.264 --quality low --encoded\n"
    "\n"
    "The options are those of corvel render. The still has the values that the codec gets, 16 bits a sample in "
    ".png and\n"
    ".tif: a lossless movie has the same. A PNG file says what its colours are (chunk cICP). Where colours are\n"
    "multiplied by alpha, which a PNG file cannot say, it has no alpha: what is translucent is seen over "
    "black.\n"
    "\n"
    "Exit codes: 0 done, 1 the Write node reported an error, 2 usage, 3 an input is missing or unreadable, 4 "
    "the\n"
    "QuickTime helper is missing or died, 130 interrupted.";

class LookCommand : public Command {
public:
    std::string name() const override { return "look"; }
    std::string summary() const override { return "Write one frame, as the codec gets it, to a still"; }

    void declare(CLI::App& app) override {
        app.add_option("INPUT", request.render.input,
                       "Image sequence (shot.####.exr, shot.%04d.exr), one still, or a movie")
            ->required()
            ->type_name("");
        app.add_option("-o,--output", request.render.output,
                       "The still to write, whose name ends in .png, .tif, .exr or .dpx")
            ->required()
            ->type_name("OUTPUT");
        app.add_flag("-y,--overwrite", request.render.overwrite,
                     "Replace an existing still (default: refuse)");
        app.add_option("--frame", request.frame,
                       "The frame to look at, by its number in the render (default: the first one)")
            ->type_name("N");
        app.add_flag("--encoded", request.encoded,
                     "Encode the frame and decode it again: what the codec loses is lost");
        declareShotOptions(app, "render", request.render, preset);
        app.footer(footer);
    }

    Exit run(Session& session) override {
        settleKnobs(request.render, preset);
        startUp();
        return look(request, *session.reporter);
    }

private:
    LookRequest request;
    std::string preset;
};

}  // namespace

std::unique_ptr<Command> lookCommand() {
    return std::make_unique<LookCommand>();
}

}  // namespace Corvel
