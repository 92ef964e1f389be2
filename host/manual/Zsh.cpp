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

std::string commandCase(const CommandFacts& command) {
    std::string text = fmt::format("        {})\n            _arguments -s", command.name);
    text += specifications(command.options, "                ");
    for (const OptionFacts& operand : command.operands) {
        text += fmt::format(" \\\n                '*:{}:{}'", operand.value, action(operand));
    }
    return text + "\n            ;;\n";
}

}  // namespace

std::string zshCompletion(const ProgramFacts& program) {
    std::string summaries, commands;
    for (const CommandFacts& command : program.commands) {
        summaries += fmt::format("        '{}:{}'\n", command.name, escaped(command.summary, ":\\"));
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
                       summaries, specifications(program.options, "        "), commands);
}

}  // namespace Corvel
