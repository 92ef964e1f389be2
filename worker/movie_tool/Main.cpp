#include "worker/Status.h"
#include "worker/movie_tool/Commands.h"

#include <fmt/core.h>
#include <CLI/CLI.hpp>

extern "C" {
#include <libavutil/log.h>
}

#include <csignal>
#include <cstdio>
#include <new>
#include <string>

namespace {

constexpr int failed = 1;

/// One line for each failure, with the code that the helper answers for it.
void report(const char* reason, Morvane::Worker::Status status) {
    fmt::print(stderr, "corvel-movie: {} ({})\n", reason, static_cast<int>(status));
}

}  // namespace

/// Ends with 0, with 1 and a line on standard error when it fails, or with the command line's code.
int main(int argc, char** argv) {
    using namespace Morvane::Worker;
    // A file-size limit is an error of the write, not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
    // Failures are told by us, one line each; the library's own remarks would drown them.
    av_log_set_level(AV_LOG_QUIET);
    CLI::App app{"Works on movie files that the QuickTime helper wrote."};
    app.require_subcommand(1);
    std::string path;
    CLI::App* recover = app.add_subcommand("recover", "Make a movie whole that a crash has left unfinished");
    recover->add_option("FILE", path, "The movie; it is replaced when the whole one is on the disk")
        ->required();
    CLI::App* sound = app.add_subcommand("sound", "Tell which sound of a file a movie would take");
    sound->add_option("FILE", path, "Any file with sound")->required();
    CLI11_PARSE(app, argc, argv);
    try {
        if (recover->parsed()) {
            recoverCommand(path);
        } else {
            soundCommand(path);
        }
    } catch (const StatusError& error) {
        report(error.what(), error.status);
        return failed;
    } catch (const std::bad_alloc&) {
        report("not enough memory", Status::NoMemory);
        return failed;
    }
    return 0;
}
