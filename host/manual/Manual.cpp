#include <fmt/format.h>

#include "host/manual/Renderings.h"

namespace Corvel {
namespace {

// scdoc takes these for markup, inside words too.
std::string plain(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (std::string("\\*_<[#.'`~-").find(character) != std::string::npos) {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

std::string namesOf(const OptionFacts& option) {
    std::string text;
    for (const std::string& name : option.names) {
        text += (text.empty() ? "*" : ", *") + plain(name) + "*";
    }
    if (!option.value.empty()) {
        text += fmt::format("{}_{}_", text.empty() ? "" : " ", plain(option.value));
    }
    return text;
}

void addOption(std::string& text, const OptionFacts& option) {
    text += fmt::format("{}{}\n\t{}\n\n", namesOf(option), option.required ? " (required)" : "",
                        plain(option.help));
}

void addFooter(std::string& text, const std::string& footer) {
    if (!footer.empty()) {
        text += fmt::format("```\n{}\n```\n\n", footer);
    }
}

std::string synopsis(const std::string& name, const CommandFacts& command) {
    std::string text = "*corvel " + plain(name) + "*";
    for (const OptionFacts& option : command.options) {
        if (option.required) {
            text += fmt::format(" *{}* _{}_", plain(option.names.back()), plain(option.value));
        }
    }
    text += command.subcommands.empty() ? " \\[options\\]" : " _SUBCOMMAND_ \\[options\\]";
    for (const OptionFacts& operand : command.operands) {
        text += fmt::format(" _{}_", plain(operand.value));
    }
    return text;
}

void addCommand(std::string& text, const std::string& name, const CommandFacts& command) {
    text += fmt::format("{}\n\n{}.\n\n", synopsis(name, command), plain(command.summary));
    for (const OptionFacts& operand : command.operands) {
        addOption(text, operand);
    }
    for (const OptionFacts& option : command.options) {
        if (option.names.back() != "--help") {
            addOption(text, option);
        }
    }
    for (const CommandFacts& subcommand : command.subcommands) {
        addCommand(text, name + " " + subcommand.name, subcommand);
    }
    addFooter(text, command.footer);
}

}  // namespace

std::string manualSection(const ProgramFacts& program) {
    std::string text = "# OPTIONS\n\n";
    for (const OptionFacts& option : program.options) {
        addOption(text, option);
    }
    text += "# COMMANDS\n\n";
    for (const CommandFacts& command : program.commands) {
        text += fmt::format("## {}\n\n", command.name);
        addCommand(text, command.name, command);
    }
    return text;
}

}  // namespace Corvel
