#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/manual/Renderings.h"

namespace Corvel {
namespace {

std::string escaped(const std::string& text, const std::string& special) {
    std::string result;
    for (const char character : text) {
        if (character == '\'') {
            result += "'\\''";
            continue;
        }
        if (special.find(character) != std::string::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

std::string action(const OptionFacts& option) {
    switch (option.values) {
        case Values::Words:
            return fmt::format("({})", fmt::join(option.words, " "));
        case Values::Codec:
            return "_corvel_codecs";
        case Values::File:
            return "_files";
        default:
            return "";
    }
}

std::string value(const OptionFacts& option) {
    return option.values == Values::None
               ? ""
               : fmt::format(":{}:{}", escaped(option.value, ":[]\\"), escaped(action(option), ""));
}

// One specification a name, as _arguments(1) of zshcompsys wants it: '--name[help]:VALUE:action'.
std::string specifications(const std::vector<OptionFacts>& options, const char* indent) {
    std::string text;
    for (const OptionFacts& option : options) {
        for (const std::string& name : option.names) {
            text +=
                fmt::format(" \\\n{}'*{}[{}]{}'", indent, name, escaped(option.help, "[]\\"), value(option));
        }
    }
    return text;
}

std::string arguments(const CommandFacts& command, const std::string& indent) {
    std::string text = "_arguments -s" + specifications(command.options, indent.c_str());
    for (const OptionFacts& operand : command.operands) {
        // A list without a word for what nobody can guess: beside an empty action no option is completed.
        const std::string values = action(operand);
        text += fmt::format(" \\\n{}'*:{}:{}'", indent, operand.value, values.empty() ? "( )" : values);
    }
    return text;
}

std::string described(const std::vector<CommandFacts>& commands, const char* indent) {
    std::string text;
    for (const CommandFacts& command : commands) {
        text += fmt::format("{}'{}:{}'\n", indent, command.name, escaped(command.summary, ":\\"));
    }
    return text;
}

// The word behind the command is one of its subcommands; the rest is theirs.
std::string subcommandCases(const CommandFacts& command) {
    std::string cases;
    for (const CommandFacts& subcommand : command.subcommands) {
        cases += fmt::format("                {}) {} ;;\n", subcommand.name,
                             arguments(subcommand, "                    "));
    }
    return fmt::format(R"zsh(if (( CURRENT == 2 )); then
                commands=(
{}                )
                _describe command commands
            else
                shift words
                (( CURRENT-- ))
                case $words[1] in
{}                esac
            fi)zsh",
                       described(command.subcommands, "                    "), cases);
}

std::string commandCase(const CommandFacts& command) {
    return fmt::format(
        "        {})\n            {}\n            ;;\n", command.name,
        command.subcommands.empty() ? arguments(command, "                ") : subcommandCases(command));
}

}  // namespace

std::string zshCompletion(const ProgramFacts& program) {
    std::string commands;
    for (const CommandFacts& command : program.commands) {
        commands += commandCase(command);
    }
    return fmt::format(R"zsh(#compdef corvel
# Completion of corvel's command line, made from the program's own declarations.

_corvel_codecs() {{
    local -a codecs
    codecs=(${{(f)"$(_call_program codecs corvel codecs --json 2>/dev/null |
        sed -n 's/.*"type": *"\([^" ]*\).*/\1/p')"}})
    compadd -a codecs
}}

_corvel() {{
    local context state line
    local -A opt_args
    local -a commands
    commands=(
{}    )
    _arguments -C{} \
        '1:command:->command' '*::argument:->argument' && return
    case $state in
    command) _describe command commands ;;
    argument)
        case $line[1] in
{}        esac
        ;;
    esac
}}

_corvel "$@"
)zsh",
                       described(program.commands, "        "), specifications(program.options, "        "),
                       commands);
}

}  // namespace Corvel
