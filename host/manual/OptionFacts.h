#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace Corvel {

/// What can be completed as an option's or operand's value.
enum class Values {
    None,   ///< it takes no value
    Free,   ///< anything
    File,   ///< a path
    Words,  ///< one of OptionFacts::words
    Codec,  ///< a codec's four characters, to be asked for when it is wanted
};

/// One option or operand of a command, as shells and manuals want it.
struct OptionFacts {
    std::vector<std::string> names;     ///< with their dashes, "--no-" forms included; empty for an operand
    std::vector<std::string> offNames;  ///< those of `names` that turn a switch off
    std::string value;                  ///< what the value is called; empty for none
    std::string help;                   ///< one line
    Values values = Values::None;
    std::vector<std::string> words;
    bool required = false;
};

/// A command's options first, then its operands, each in the order of its help.
struct CommandFacts {
    std::string name;
    std::string summary;
    std::vector<OptionFacts> options;
    std::vector<OptionFacts> operands;
    std::string footer;
    std::vector<CommandFacts> subcommands;  ///< one of these follows, where there are any
};

/// Everything that a person can type, from the declarations that the program itself parses with.
struct ProgramFacts {
    std::vector<OptionFacts> options;  ///< before a command
    std::vector<CommandFacts> commands;
};

ProgramFacts programFacts();

}  // namespace Corvel
