#include <fmt/format.h>

#include <optional>

#include "host/app/Command.h"
#include "host/app/FrameOptions.h"
#include "host/app/ReadOptions.h"
#include "host/play/Play.h"
#include "host/render/Bundle.h"
#include "host/render/Curves.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Frames are scaled to the mode's size with their aspect kept. Keys in the window: space pauses and goes "
    "on, the\n"
    "right arrow or . shows one frame, q or Escape closes it, which ends the command with exit code 0. "
    "Frames that\n"
    "come too late are dropped; at the end the helper says how many.\n"
    "Ctrl-C ends, too; three times also while the window is paused.\n"
    "\n"
    "Examples:\n"
    "  corvel play 'shot.####.exr' --device display --mode 1920x1080@24\n"
    "  corvel play 'shot.####.exr' --device 2 --mode 1920x1080@25 --full-screen --loop\n"
    "  corvel play shot.%04d.png --device network --mode 1280x720@50\n"
    "  ffplay udp://127.0.0.1:5004    (in another terminal, to see the network device)\n"
    "  corvel play shot.%04d.png --device 'Network 192.168.1.20:5004' --mode 1280x720@50\n"
    "\n"
    "Exit codes: 0 done or closed, 1 the video output failed, 2 usage, 3 an input is missing or unreadable, "
    "4 the\n"
    "QuickTime helper is missing or died, 130 interrupted.";

class PlayCommand : public Command {
public:
    std::string name() const override { return "play"; }
    std::string summary() const override { return "Show frames on a video output"; }
    void declare(CLI::App& app) override;

    Exit run(Session& session) override {
        Bundle().checkHelper();
        return play(request, session.console, *session.reporter);
    }

private:
    void declarePicture(CLI::App& app);

    PlayRequest request;
    std::optional<int> depth;  // alpha is not shown, whatever is asked
};

void PlayCommand::declare(CLI::App& app) {
    app.add_option("INPUT", request.input,
                   "Image sequence (shot.####.exr, shot.%04d.exr), one still, or a movie")
        ->required()
        ->type_name("");
    app.add_option("--device", request.device,
                   "Number, name or beginning of the name of a video output (see corvel devices)")
        ->required()
        ->type_name("DEVICE");
    app.add_option("--mode", request.mode, "Size and rate, such as 1920x1080@25")
        ->required()
        ->type_name("WxH@RATE");
    app.add_flag("--loop", request.loop, "Play again and again");
    app.add_flag("--full-screen", request.fullScreen, "Use the whole screen (default: a window)");
    declareReadOptions(app, request.choice, depth);
    declareFrameOptions(app, "show", request.frames, request.missing);
    app.add_option("--threads", request.threads, "Threads that read frames (default: one a processor)")
        ->check(CLI::Range(1, 256).description(""))
        ->type_name("N")
        ->group("Frames");
    declarePicture(app);
    app.footer(footer);
}

void PlayCommand::declarePicture(CLI::App& app) {
    app.add_option("--lut", request.lut,
                   fmt::format("Curve of the output's values: {} (default: srgb)", curveNames()))
        ->type_name("NAME")
        ->group("Picture");
    app.add_option("--input-lut", request.inputLut,
                   "Curve of the input's values (default: what the files say, else linear for floats, srgb "
                   "for integers)")
        ->type_name("NAME")
        ->group("Picture");
}

}  // namespace

std::unique_ptr<Command> playCommand() {
    return std::make_unique<PlayCommand>();
}

}  // namespace Corvel
