#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/manual/Renderings.h"

namespace Corvel {
namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        if (character == '\'' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return result + "'";
}

std::string action(const OptionFacts& option) {
    switch (option.values) {
        case Values::None:
            return "";
        case Values::File:
            return " -r -F";
        case Values::Words:
            return fmt::format(" -x -a '{}'", fmt::join(option.words, " "));
        case Values::Codec:
            return " -x -a '(__corvel_codecs)'";
        case Values::Free:
            break;
    }
    return " -x";
}

std::string line(const OptionFacts& option, const std::string& condition) {
    std::string names;
    for (const std::string& name : option.names) {
        names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    return fmt::format("complete -c corvel -n '{}'{}{} -d {}\n", condition, names, action(option),
                       quoted(option.help));
}

// `here`: where the command's name may stand; `before`: what has been typed then.
std::string commandLines(const CommandFacts& command, const std::string& here, const std::string& before) {
    const std::string condition = before + "__fish_seen_subcommand_from " + command.name;
    std::string text = fmt::format("\ncomplete -c corvel -n '{}' -a {} -d {}\n", here, command.name,
                                   quoted(command.summary));
    for (const OptionFacts& option : command.options) {
        text += line(option, condition);
    }
    if (!command.operands.empty() && command.operands.front().values == Values::File) {
        text += fmt::format("complete -c corvel -n '{}' -F\n", condition);
    }
    std::string stillWanted = condition + "; and not __fish_seen_subcommand_from";
    for (const CommandFacts& subcommand : command.subcommands) {
        stillWanted += " " + subcommand.name;
    }
    for (const CommandFacts& subcommand : command.subcommands) {
        text += commandLines(subcommand, stillWanted, condition + "; and ");
    }
    return text;
}

}  // namespace

std::string fishCompletion(const ProgramFacts& program) {
    std::string text = R"(# Completion of corvel's command line, made from the program's own declarations.

function __corvel_codecs
    corvel codecs --json 2>/dev/null | string replace -rf '.*"type": *"([^" ]*).*' '$1'
end

complete -c corvel -f
)";
    for (const OptionFacts& option : program.options) {
        text += line(option, "__fish_use_subcommand");
    }
    for (const CommandFacts& command : program.commands) {
        text += commandLines(command, "__fish_use_subcommand", "");
    }
    return text;
}

}  // namespace Corvel
