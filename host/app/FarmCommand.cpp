#include <optional>

#include "host/app/Command.h"
#include "host/app/ProgressOption.h"
#include "host/farm/ChunkRun.h"
#include "host/farm/Farm.h"
#include "host/render/Log.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "  status  how far it is, and which chunks failed where and why\n"
    "  cancel  end it; leaves nothing but the finished chunks, and says where they are\n"
    "  resume  render only the chunks that are missing or damaged, then join\n"
    "\n"
    "Exit codes: 0 done, 1 chunks failed or could not be joined, 2 usage, 3 there is no such render, 4 Slurm "
    "failed,\n"
    "130 interrupted.";

class FarmCommand : public Command {
public:
    std::string name() const override { return "farm"; }
    std::string summary() const override { return "Look after a render in chunks"; }
    void declare(CLI::App& app) override;
    Exit run(Session& session) override;

private:
    std::string action;
    std::string output;
    int chunk = 0;
    bool wait = false;
    std::optional<ProgressStyle> progress;
};

void FarmCommand::declare(CLI::App& app) {
    // "chunk" and "finish" are what the farm's own jobs call.
    app.add_option("ACTION", action, "status, cancel or resume")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"status", "cancel", "resume", "chunk", "finish"})
                    .description(""))
        ->type_name("");
    app.add_option("OUTPUT", output, "The movie, as it was given to `corvel render --farm`")
        ->required()
        ->type_name("");
    app.add_flag("--wait", wait, "With resume and Slurm: show progress until the movie is whole");
    app.add_option("--chunk", chunk)->group("");
    declareProgressOption(app, progress, "");
    app.footer(footer);
}

Exit FarmCommand::run(Session& session) {
    useProgress(session, progress);
    const FarmPlace place(output);
    if (action == "status") {
        return farmStatus(place);
    }
    if (action == "cancel") {
        return farmCancel(place);
    }
    if (action == "resume") {
        return farmResume(place, wait, *session.reporter);
    }
    return action == "chunk" ? runChunk(place, loadState(place), chunk) : farmFinish(place);
}

}  // namespace

std::unique_ptr<Command> farmCommand() {
    return std::make_unique<FarmCommand>();
}

}  // namespace Corvel
