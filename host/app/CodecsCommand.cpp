#include <fmt/format.h>

#include <algorithm>

#include "host/app/CodecFacts.h"
#include "host/app/Command.h"
#include "host/app/StartUp.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* footer =
    "The second line of a codec says what each quality means to its encoder.\n"
    "The index, the type or the name (or the beginning of a name) is what `corvel render --codec` takes.\n"
    "\n"
    "Examples:\n"
    "  corvel codecs\n"
    "  corvel codecs --json | jq -r '.[] | select(.alpha) | .name'";

std::string words(const Json& fact) {
    if (fact.is_null()) {
        return "?";
    }
    if (fact.is_boolean()) {
        return fact.get<bool>() ? "yes" : "no";
    }
    return fact.is_string() ? fact.get<std::string>() : fact.dump();
}

void printTable(const std::vector<CodecFacts>& codecs) {
    std::size_t width = 4;
    for (const CodecFacts& codec : codecs) {
        width = std::max(width, codec.name.size());
    }
    const char* const row = "{:>5}  {:<4}  {:<{}}  {:>4}  {:<5}  {:<14}  {:<8}  {}\n";
    fmt::print(fmt::runtime(row), "INDEX", "TYPE", "NAME", width, "BITS", "ALPHA", "ONLY KEYFRAMES",
               "LOSSLESS", "SIZES");
    for (const CodecFacts& codec : codecs) {
        fmt::print(fmt::runtime(row), codec.index, codec.type, codec.name, width, words(codec.facts["bits"]),
                   words(codec.facts["alpha"]), words(codec.facts["intra"]), words(codec.facts["lossless"]),
                   words(codec.facts["sizes"]));
        if (const Json& quality = codec.facts["quality"]; quality.is_string()) {
            fmt::print("{:>13}{}\n", "", quality.get<std::string>());
        }
    }
}

void printJson(const std::vector<CodecFacts>& codecs) {
    Json list = Json::array();
    for (const CodecFacts& codec : codecs) {
        Json object{{"index", codec.index}, {"type", codec.type}, {"name", codec.name}};
        object.update(codec.facts);
        list.push_back(object);
    }
    fmt::print("{}\n", list.dump(2, ' ', false, Json::error_handler_t::replace));
}

class CodecsCommand : public Command {
public:
    std::string name() const override { return "codecs"; }
    std::string summary() const override { return "List the codecs that movies can have"; }

    void declare(CLI::App& app) override {
        app.add_flag("--json", json, "Print one JSON document");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        startUp();
        const std::vector<CodecFacts> codecs = askForCodecs(*session.reporter);
        json ? printJson(codecs) : printTable(codecs);
        return Exit::Done;
    }

private:
    bool json = false;
};

}  // namespace

std::unique_ptr<Command> codecsCommand() {
    return std::make_unique<CodecsCommand>();
}

}  // namespace Corvel
