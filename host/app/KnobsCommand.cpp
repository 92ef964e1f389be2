#include <fmt/format.h>

#include "host/app/Command.h"
#include "host/app/KnobList.h"
#include "host/app/StartUp.h"
#include "host/render/NodeHost.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* footer =
    "The names are options of `corvel render` (--fps 25, --no-Flatten); --knob NAME=VALUE reaches every one "
    "of them.\n"
    "\n"
    "Examples:\n"
    "  corvel knobs\n"
    "  corvel knobs --json | jq -r '.[].name'";

class KnobsCommand : public Command {
public:
    std::string name() const override { return "knobs"; }
    std::string summary() const override {
        return "List the Write node's knobs and their values at the start";
    }

    void declare(CLI::App& app) override {
        app.add_flag("--json", json, "Print one JSON document");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        startUp();
        HelperSession helpers(0, *session.reporter);
        NodeHost host("knobs.mov", Kex::Image::Format(1920, 1080), 4, helpers);
        Json list = Json::array();
        std::string text;
        for (const auto& knob : host.node().knobs()) {
            list.push_back(knobJson(*knob));
            text += (text.empty() ? "" : "\n") + knobText(*knob);
        }
        fmt::print("{}", json ? list.dump(2, ' ', false, Json::error_handler_t::replace) + '\n' : text);
        return Exit::Done;
    }

private:
    bool json = false;
};

}  // namespace

std::unique_ptr<Command> knobsCommand() {
    return std::make_unique<KnobsCommand>();
}

}  // namespace Corvel
