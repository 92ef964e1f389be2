#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "host/render/Console.h"
#include "host/render/Failure.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// What a command works with besides its own options.
struct Session {
    Console& console;                    ///< standard error
    std::unique_ptr<Reporter> reporter;  ///< where messages go; a command may put another one in its place
};

/// One command of `corvel`: its options, and what it does. A new one gets a file of its own and a line in
/// `allCommands`.
class Command {
public:
    virtual ~Command() = default;

    virtual std::string name() const = 0;
    /// One line for the list of commands.
    virtual std::string summary() const = 0;
    /// Adds the command's options to its own part of the command line; called once, before anything is
    /// parsed.
    virtual void declare(CLI::App& app) = 0;
    /// Does it, with the options as parsed. Throws Failure and what main.cpp lists beside it.
    virtual Exit run(Session& session) = 0;
};

std::unique_ptr<Command> renderCommand();
std::unique_ptr<Command> lookCommand();
std::unique_ptr<Command> codecsCommand();
std::unique_ptr<Command> knobsCommand();
std::unique_ptr<Command> presetsCommand();
std::unique_ptr<Command> infoCommand();
std::unique_ptr<Command> devicesCommand();
std::unique_ptr<Command> playCommand();
std::unique_ptr<Command> doctorCommand();
std::unique_ptr<Command> panelCommand();
std::unique_ptr<Command> nodeCommand();
std::unique_ptr<Command> recoverCommand();
std::unique_ptr<Command> joinCommand();
std::unique_ptr<Command> farmCommand();
std::unique_ptr<Command> conformanceCommand();

/// Every command, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> allCommands();

}  // namespace Corvel
