#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/manual/Renderings.h"

namespace Corvel {
namespace {

std::string words(const std::vector<OptionFacts>& options) {
    std::vector<std::string> names;
    for (const OptionFacts& option : options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return fmt::format("{}", fmt::join(names, " "));
}

std::string reply(const OptionFacts& option) {
    switch (option.values) {
        case Values::Words:
            return fmt::format("_corvel_words '{}'", fmt::join(option.words, " "));
        case Values::Codec:
            return "_corvel_words \"$(_corvel_codecs)\"";
        case Values::File:
            return "_corvel_files";
        default:
            return "COMPREPLY=()";
    }
}

// The cases for the value after an option: "render,--missing) …". A subcommand is called "presets-save".
std::string valueCases(const std::string& called, const CommandFacts& command) {
    std::string text;
    for (const OptionFacts& option : command.options) {
        if (option.values == Values::None) {
            continue;
        }
        std::string pattern;
        for (const std::string& name : option.names) {
            pattern += fmt::format("{}{},{}", pattern.empty() ? "" : " | ", called, name);
        }
        text += fmt::format("        {}) {}; return ;;\n", pattern, reply(option));
    }
    for (const CommandFacts& subcommand : command.subcommands) {
        text += valueCases(called + "-" + subcommand.name, subcommand);
    }
    return text;
}

// "/render | /info | presets/save", as a line's words are tried behind the command found so far.
std::string namePatterns(const std::string& before, const std::vector<CommandFacts>& commands) {
    std::string text;
    for (const CommandFacts& command : commands) {
        text += fmt::format("{}{}/{}", text.empty() ? "" : " | ", before, command.name);
        if (!command.subcommands.empty()) {
            text += " | " + namePatterns(command.name, command.subcommands);
        }
    }
    return text;
}

std::string commandCase(const std::string& called, const CommandFacts& command) {
    const bool takesFile = !command.operands.empty() && command.operands.front().values == Values::File;
    std::string names, cases;
    for (const CommandFacts& subcommand : command.subcommands) {
        names += subcommand.name + " ";
        cases += commandCase(called + "-" + subcommand.name, subcommand);
    }
    return fmt::format("        {}) _corvel_words '{}{}'{} ;;\n", called, names, words(command.options),
                       takesFile ? "; [[ $current == -* ]] || _corvel_files" : "") +
           cases;
}

constexpr const char* helpers =
    R"(# Completion of corvel's command line, made from the program's own declarations.

_corvel_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_corvel_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

# Asks the very program that is typed.
_corvel_codecs() { "${COMP_WORDS[0]}" codecs --json 2>/dev/null | sed -n 's/.*"type": *"\([^" ]*\).*/\1/p'; }

)";

}  // namespace

std::string bashCompletion(const ProgramFacts& program) {
    std::vector<std::string> names;
    std::string values, commands;
    for (const CommandFacts& command : program.commands) {
        names.push_back(command.name);
        values += valueCases(command.name, command);
        commands += commandCase(command.name, command);
    }
    return fmt::format(R"({}_corvel() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} command='' word
    # bash takes "--name=value" for three words.
    [[ $previous == = ]] && previous=${{COMP_WORDS[COMP_CWORD - 2]}}
    [[ $current == = ]] && current=''
    COMPREPLY=()
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        case $command/$word in
        {}) command+=${{command:+-}}$word ;;
        esac
    done
    case $command,$previous in
{}    esac
    case $command in
{}        *) _corvel_words '{} {}' ;;
    esac
}}
complete -F _corvel corvel
)",
                       helpers, namePatterns("", program.commands), values, commands, fmt::join(names, " "),
                       words(program.options));
}

}  // namespace Corvel
