#include "host/app/CommandLine.h"

#include "host/app/HelpText.h"

namespace Corvel {
namespace {

constexpr const char* description =
    "corvel writes QuickTime movies from image sequences.\n"
    "\n"
    "The first movie:  corvel render 'shot.####.exr' -o shot.mov";

constexpr const char* footer =
    "Each command has a help of its own: corvel render --help\n"
    "\n"
    "Exit codes:\n"
    "  0    done\n"
    "  1    the Write node reported an error: the movie is not whole\n"
    "  2    the command line can't be carried out as it stands\n"
    "  3    an input is missing or unreadable\n"
    "  4    the QuickTime helper is missing or died\n"
    "  130  interrupted; the movie so far is kept";

}  // namespace

void declareCommandLine(CLI::App& app, const std::vector<std::unique_ptr<Command>>& commands) {
    app.name("corvel");
    app.description(description);
    app.set_version_flag("--version", "corvel " CORVEL_VERSION, "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.require_subcommand(1);
    app.footer(footer);
    app.formatter(makeHelpFormatter());
    for (const auto& command : commands) {
        command->declare(*app.add_subcommand(command->name(), command->summary()));
    }
}

}  // namespace Corvel
