#include <string>
#include <utility>
#include <vector>

#include "host/app/Command.h"
#include "host/app/Tool.h"

namespace Corvel {
namespace {

// A command that is a program beside the helper, since it works on what the host itself does not touch: movie
// files and the bridge's bare protocol. The program takes this process's place, and so its exit code
// is the command's.
class ToolCommand : public Command {
public:
    struct Tool {
        const char* command;
        const char* summary;
        const char* program;                 // in the bundle's Resources
        std::vector<const char*> arguments;  // before the person's own
        const char* operand;
        const char* operandHelp;
        const char* footer;
    };

    explicit ToolCommand(Tool wanted) : tool(std::move(wanted)) {}

    std::string name() const override { return tool.command; }
    std::string summary() const override { return tool.summary; }

    void declare(CLI::App& app) override {
        app.add_option(tool.operand, operand, tool.operandHelp)->required()->type_name("");
        app.footer(tool.footer);
    }

    Exit run(Session&) override {
        std::vector<std::string> arguments(tool.arguments.begin(), tool.arguments.end());
        arguments.push_back(operand);
        becomeTool(tool.program, arguments);
    }

private:
    const Tool tool;
    std::string operand;
};

}  // namespace

std::unique_ptr<Command> recoverCommand() {
    return std::make_unique<ToolCommand>(ToolCommand::Tool{
        .command = "recover",
        .summary = "Make a movie whole that a crash has left unfinished",
        .program = "corvel-movie",
        .arguments = {"recover"},
        .operand = "FILE",
        .operandHelp = "The unfinished movie; it is replaced when the whole one is on the disk",
        .footer = "A render that was cut off leaves its movie under a hidden name beside OUTPUT; the message "
                  "says which.\n"
                  "\n"
                  "Exit codes: 0 the movie is whole, 1 it could not be recovered.",
    });
}

std::unique_ptr<Command> conformanceCommand() {
    return std::make_unique<ToolCommand>(ToolCommand::Tool{
        .command = "conformance",
        .summary = "Try a worker program against the promises of the bridge's protocol",
        .program = "corvel-conformance",
        .arguments = {},
        .operand = "WORKER",
        .operandHelp = "The program, started as the host would start it, in each of its modes",
        .footer = "Exit codes: 0 every promise holds, 1 some do not, 2 WORKER is no program.",
    });
}

}  // namespace Corvel
