#include <string>
#include <vector>

#include "host/app/Command.h"
#include "host/app/GivenOptions.h"
#include "host/app/ShotOptions.h"
#include "host/app/Tool.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "The panel shows every knob of the node and the frame as it will be encoded, and renders; the options are "
    "for both.\n"
    "It remembers its settings in $XDG_CONFIG_HOME/corvel (else ~/.config/corvel).\n"
    "\n"
    "Example:\n"
    "  corvel panel 'shot.####.exr' --display 'sRGB - Display' --view Filmic --burnin default\n"
    "\n"
    "Exit codes: 0 closed, 2 usage, or there is no display.";

class PanelCommand : public Command {
public:
    std::string name() const override { return "panel"; }
    std::string summary() const override { return "Show the Write node's panel in a window"; }

    void declare(CLI::App& app) override {
        options = &app;
        app.add_option("INPUT", request.input, "Image sequence, still or movie, as `corvel render` takes it")
            ->type_name("");
        declarePictureOptions(app, request);
        app.footer(footer);
    }

    Exit run(Session&) override {
        std::vector<std::string> arguments = givenOptions(*options);
        if (!request.input.empty()) {
            arguments.push_back(request.input);
        }
        becomeTool("corvel-panel", arguments);
    }

private:
    const CLI::App* options = nullptr;
    RenderRequest request;
};

}  // namespace

std::unique_ptr<Command> panelCommand() {
    return std::make_unique<PanelCommand>();
}

}  // namespace Corvel
