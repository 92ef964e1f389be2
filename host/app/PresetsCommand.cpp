#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/app/Command.h"
#include "host/app/KnobOptions.h"
#include "host/app/NodeConversation.h"
#include "host/app/StartUp.h"
#include "host/presets/PresetStore.h"
#include "host/render/KnobValue.h"
#include "host/render/NodeHost.h"
#include "host/render/NodeSettings.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* footer =
    "`corvel render --preset NAME` and the panel take presets; options beside it count more. What a person "
    "saves is in\n"
    "$XDG_CONFIG_HOME/corvel/presets (else ~/.config/corvel/presets), one JSON file a preset.\n"
    "\n"
    "Examples:\n"
    "  corvel presets list\n"
    "  corvel presets save dailies --codec 'prores 422 lt' --writeTimeCode --description 'For the director'\n"
    "  corvel render 'shot.####.exr' -o shot.mov --preset dailies";

class PresetsCommand : public Command {
public:
    std::string name() const override { return "presets"; }
    std::string summary() const override { return "List, show, save and delete named knob values"; }
    void declare(CLI::App& app) override;
    Exit run(Session& session) override;

private:
    void declareSave(CLI::App& app);
    void list(const PresetStore& store) const;
    void save(const PresetStore& store, Session& session);

    CLI::App* listing = nullptr;
    CLI::App* showing = nullptr;
    CLI::App* saving = nullptr;
    bool json = false;
    Preset preset;
};

void PresetsCommand::declare(CLI::App& app) {
    app.require_subcommand(1);
    app.footer(footer);
    listing = app.add_subcommand("list", "All presets, a line each");
    listing->add_flag("--json", json, "Print one JSON document");
    showing = app.add_subcommand("show", "One preset as its file has it");
    declareSave(app);
    CLI::App* const deleting = app.add_subcommand("delete", "Delete a preset that a person has saved");
    for (CLI::App* const one : {showing, saving, deleting}) {
        one->add_option("NAME", preset.name, "Name of the preset")->required()->type_name("");
    }
}

void PresetsCommand::declareSave(CLI::App& app) {
    saving = app.add_subcommand("save", "Save the knob values that are given, in place of an older preset");
    saving->add_option("--description", preset.description, "One line for the list")->type_name("TEXT");
    declareKnobOptions(*saving, preset.knobs);
}

Exit PresetsCommand::run(Session& session) {
    const PresetStore store = presetStore(Bundle().contents());
    if (listing->parsed()) {
        list(store);
    } else if (showing->parsed()) {
        fmt::print("{}", presetJson(store.load(preset.name)));
    } else if (saving->parsed()) {
        save(store, session);
    } else {
        store.remove(preset.name);
    }
    return Exit::Done;
}

void PresetsCommand::list(const PresetStore& store) const {
    Json document = Json::array();
    for (const Preset& one : store.list()) {
        document.push_back(presetEntry(one));
        if (!json) {
            fmt::print("{:<16}{}\n", one.name, one.description);
        }
    }
    if (json) {
        fmt::print("{}\n", document.dump(2, ' ', false, Json::error_handler_t::replace));
    }
}

// On a node first, so that a preset that no node takes is refused now rather than when it is needed.
void PresetsCommand::save(const PresetStore& store, Session& session) {
    if (preset.knobs.empty()) {
        throw Failure(Exit::Usage, "a preset needs at least one knob, such as --codec apch");
    }
    startUp();
    HelperSession helpers(0, *session.reporter);
    NodeHost host("preset.mov", Kex::Image::Format(1920, 1080), 4, helpers);
    applyKnobs(host.node(), preset.knobs);
    fmt::print("{}\n", store.save(preset));
}

}  // namespace

std::unique_ptr<Command> presetsCommand() {
    return std::make_unique<PresetsCommand>();
}

}  // namespace Corvel
