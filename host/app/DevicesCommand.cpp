#include <fmt/format.h>

#include "host/app/Command.h"
#include "host/play/OutputDeviceList.h"
#include "host/render/Bundle.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "The number, the name or the beginning of a name is what `corvel play --device` takes, a size and a rate "
    "what\n"
    "`--mode` takes. The network device sends an MPEG transport stream over UDP.\n"
    "\n"
    "Examples:\n"
    "  corvel devices\n"
    "  corvel devices --json | jq -r '.[].name'";

class DevicesCommand : public Command {
public:
    std::string name() const override { return "devices"; }
    std::string summary() const override { return "List the video outputs and what they can show"; }

    void declare(CLI::App& app) override {
        app.add_flag("--json", json, "Print one JSON document");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        Bundle().checkHelper();
        const std::vector<OutputDeviceEntry> devices = askForOutputDevices(*session.reporter);
        fmt::print("{}", json ? deviceJson(devices) : deviceTable(devices));
        return Exit::Done;
    }

private:
    bool json = false;
};

}  // namespace

std::unique_ptr<Command> devicesCommand() {
    return std::make_unique<DevicesCommand>();
}

}  // namespace Corvel
