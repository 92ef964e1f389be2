#include "host/app/Command.h"

namespace Corvel {

std::vector<std::unique_ptr<Command>> allCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(renderCommand());
    commands.push_back(lookCommand());
    commands.push_back(panelCommand());
    commands.push_back(codecsCommand());
    commands.push_back(knobsCommand());
    commands.push_back(presetsCommand());
    commands.push_back(infoCommand());
    commands.push_back(devicesCommand());
    commands.push_back(playCommand());
    commands.push_back(doctorCommand());
    commands.push_back(recoverCommand());
    commands.push_back(joinCommand());
    commands.push_back(farmCommand());
    commands.push_back(conformanceCommand());
    commands.push_back(nodeCommand());
    return commands;
}

}  // namespace Corvel
