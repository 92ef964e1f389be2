#include <fcntl.h>
#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "host/app/CommandLine.h"
#include "host/images/FrameSource.h"
#include "host/render/KnobValue.h"
#include "host/render/Log.h"
#include "host/render/Reason.h"

namespace Corvel {
namespace {

// Says what went wrong, and ends the report of a render that never got as far as its own end.
Exit fail(Exit code, const std::string& reason, Session& session) {
    spdlog::error(reason);
    session.reporter->end({.exit = static_cast<int>(code), .output = ""});
    return code;
}

Exit run(Command& command, Session& session) {
    try {
        return command.run(session);
    } catch (const Failure& failure) {
        return fail(failure.code, failure.what(), session);
    } catch (const NoSuchInput& error) {
        return fail(Exit::InputUnreadable, error.what(), session);
    } catch (const UnreadableImage& error) {
        return fail(Exit::InputUnreadable, error.what(), session);
    } catch (const BadKnobValue& error) {
        return fail(Exit::Usage, error.what(), session);
    } catch (const std::exception& error) {
        return fail(Exit::NodeFailed, reasonOf(error), session);
    }
}

Exit parseAndRun(int argc, char** argv, Session& session) {
    const auto commands = allCommands();
    CLI::App app;
    declareCommandLine(app, commands);
    if (argc < 2) {
        fmt::print(stderr, "{}", app.help());
        return Exit::Usage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);  // help and version, on standard output
        return Exit::Done;
    } catch (const CLI::ParseError& error) {
        const auto chosen = app.get_subcommands();
        const std::string command = chosen.empty() ? "corvel" : "corvel " + chosen.front()->get_name();
        spdlog::error("{}; {} --help tells what there is", error.what(), command);
        return Exit::Usage;
    }
    for (const auto& command : commands) {
        if (app.got_subcommand(command->name())) {
            return run(*command, session);
        }
    }
    return Exit::Usage;
}

}  // namespace
}  // namespace Corvel

int main(int argc, char** argv) {
    // A reader of our messages who goes away is no reason to give up; a failing write says the same.
    std::signal(SIGPIPE, SIG_IGN);
    // A descriptor of our own: standard error itself is the helper's for a moment.
    Corvel::Console console(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3));
    Corvel::Session session{console, Corvel::createReporter(Corvel::ProgressStyle::None, console)};
    Corvel::logTo(session.reporter.get());
    const Corvel::Exit exit = Corvel::parseAndRun(argc, argv, session);
    // Plug-ins may still have something to say while they are unloaded, but no longer here.
    Corvel::logTo(nullptr);
    return static_cast<int>(exit);
}
