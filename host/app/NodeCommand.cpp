#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "host/app/Command.h"
#include "host/app/NodeConversation.h"
#include "host/app/ReadOptions.h"
#include "host/app/StartUp.h"
#include "host/render/Log.h"
#include "platform/ProcessWatch.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "For programs, such as the panel: each line of standard input is one request, a JSON object, and has one "
    "line as its\n"
    "answer, the state of all knobs; docs/panel.md lists the requests. Messages are JSON lines on standard "
    "error. It ends\n"
    "with its standard input, and with the program that has started it.\n"
    "\n"
    "Example:\n"
    "  echo '{\"do\": \"set\", \"knob\": \"codec\", \"value\": \"apch\"}' | corvel node";

// A movie as input is opened by a helper of its own, whose frames may have any size.
constexpr std::uint64_t noFrames = 0;

/// Ends everything when the program that has started this one is gone: a dialog may be open, and who waits
/// for its answer does not look at standard input.
class ParentWatch {
public:
    explicit ParentWatch(HelperSession& helpers) : parent(getppid()) {
        thread = std::thread([this, &helpers] {
            if (parent.wait() == Morvane::Platform::ProcessWatch::Outcome::Died) {
                helpers.giveUp("the program that wanted the node is gone");
            }
        });
    }
    ~ParentWatch() {
        parent.cancel();
        thread.join();
    }
    ParentWatch(const ParentWatch&) = delete;
    ParentWatch& operator=(const ParentWatch&) = delete;

private:
    Morvane::Platform::ProcessWatch parent;
    std::thread thread;
};

class NodeCommand : public Command {
public:
    std::string name() const override { return "node"; }
    std::string summary() const override { return "Keep a Write node for another program"; }
    void declare(CLI::App& app) override {
        app.add_option("INPUT", input, "What the node is to write, as `corvel render` takes it")
            ->type_name("");
        declareReadOptions(app, choice, depth);
        app.footer(footer);
    }

    Exit run(Session& session) override {
        session.reporter = createReporter(ProgressStyle::Json, session.console);
        logTo(session.reporter.get());
        const Bundle bundle = startUp();
        const PresetStore presets = presetStore(bundle.contents());
        auto helpers = std::make_unique<HelperSession>(noFrames, *session.reporter);
        const std::optional<NodeInput> opened = open(helpers, *session.reporter);
        NodeConversation conversation(*helpers, presets, opened ? &*opened : nullptr);
        const ParentWatch watch(*helpers);
        helpers->setIdle("waiting for a request");
        print(conversation.state());
        for (std::string line; std::getline(std::cin, line);) {
            print(conversation.answer(line));
        }
        return Exit::Done;
    }

private:
    // The input, or nothing, with a message, where it can't be opened.
    std::optional<NodeInput> open(std::unique_ptr<HelperSession>& helpers, Reporter& reporter) const {
        if (input.empty()) {
            return std::nullopt;
        }
        try {
            NodeInput opened = openNodeInput(input, choice, *helpers);
            opened.header.hasAlpha = depth ? *depth == 4 : opened.header.hasAlpha;
            return opened;
        } catch (const std::exception& error) {
            spdlog::error(error.what());
        }
        // That one waits for the end of the helper that could not open the movie.
        helpers.reset();
        helpers = std::make_unique<HelperSession>(noFrames, reporter);
        return std::nullopt;
    }

    static void print(const nlohmann::ordered_json& state) {
        fmt::print("{}\n", state.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        std::fflush(stdout);
    }

    std::string input;
    PictureChoice choice;
    std::optional<int> depth;
};

}  // namespace

std::unique_ptr<Command> nodeCommand() {
    return std::make_unique<NodeCommand>();
}

}  // namespace Corvel
