#include "host/manual/OptionFacts.h"

#include <map>

#include "host/app/CommandLine.h"

namespace Corvel {
namespace {

// What the help says in words, as words to complete. A test tries each of them on the program.
const std::map<std::string, std::vector<std::string>>& wordsOfOptions() {
    static const std::map<std::string, std::vector<std::string>> words{
        {"--missing", {"error", "black", "hold"}},
        {"--quality", {"Min", "Low", "Normal", "High", "Max", "Lossless"}},
        {"--units", {"Seconds", "Frames"}},
        {"--farm", {"local", "slurm"}},
        {"--audio-units", {"Seconds", "Frames"}},
        {"--channels", {"rgb", "rgba"}},
        {"--lut", {"linear", "rec709", "gamma1.8", "gamma2.2", "gamma2.4", "cineon", "srgb"}},
        {"--input-lut", {"linear", "rec709", "gamma1.8", "gamma2.2", "gamma2.4", "cineon", "srgb"}},
        {"--fit", {"inside", "fill", "stretch", "crop"}},
        {"--filter", {"nearest", "box", "triangle", "mitchell", "catmull-rom", "lanczos"}},
        {"--progress", {"bar", "plain", "json", "none"}},
    };
    return words;
}

bool isFile(const std::string& value) {
    for (const char* file : {"FILE", "OUTPUT", "INPUT", "MOVIE", "WORKER", "CHUNK", "FOLDER"}) {
        if (value.rfind(file, 0) == 0) {
            return true;
        }
    }
    return false;
}

Values kindOf(const OptionFacts& facts) {
    if (facts.value.empty()) {
        return Values::None;
    }
    if (!facts.words.empty()) {
        return Values::Words;
    }
    if (!facts.names.empty() && facts.names.front() == "--codec") {
        return Values::Codec;
    }
    return isFile(facts.value) ? Values::File : Values::Free;
}

OptionFacts factsOf(const CLI::Option& option) {
    OptionFacts facts;
    for (const std::string& name : option.get_snames()) {
        facts.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        facts.names.push_back("--" + name);
        if (name.rfind("no-", 0) == 0 && option.check_fname(name)) {
            facts.offNames.push_back("--" + name);
        }
    }
    const bool isOperand = facts.names.empty();
    if (isOperand) {
        facts.value = option.get_single_name();
    } else if (option.get_type_size() != 0) {
        facts.value = option.get_type_name();
    }
    facts.help = option.get_description();
    facts.required = option.get_required();
    for (const std::string& name : facts.names) {
        const auto known = wordsOfOptions().find(name);
        if (known != wordsOfOptions().end()) {
            facts.words = known->second;
        }
    }
    facts.values = kindOf(facts);
    return facts;
}

CommandFacts factsOf(const CLI::App& command) {
    CommandFacts facts;
    facts.name = command.get_name();
    facts.summary = command.get_description();
    facts.footer = command.get_footer();
    for (const CLI::Option* option : command.get_options()) {
        (option->get_positional() ? facts.operands : facts.options).push_back(factsOf(*option));
    }
    for (const CLI::App* subcommand : command.get_subcommands(nullptr)) {
        facts.subcommands.push_back(factsOf(*subcommand));
    }
    return facts;
}

}  // namespace

ProgramFacts programFacts() {
    const auto commands = allCommands();
    CLI::App app;
    declareCommandLine(app, commands);
    ProgramFacts facts;
    facts.options = factsOf(app).options;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        facts.commands.push_back(factsOf(*command));
    }
    return facts;
}

}  // namespace Corvel
