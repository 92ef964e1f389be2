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

using namespace Morvane::Worker;

constexpr int failed = 1;

/// One line for each failure, with the code that the helper answers for it.
void report(const char* reason, Status status) {
    fmt::print(stderr, "corvel-movie: {} ({})\n", reason, static_cast<int>(status));
}

void declareChunks(CLI::App& app, ChunkArguments& chunks) {
    app.add_option("CHUNK", chunks.paths, "The movies, in the order in which they are played")->required();
    app.add_option("--frames", chunks.frames, "How many frames each movie must hold: 48,48,30")
        ->delimiter(',');
}

/// The words are those of `corvel join`, which hands its command line over.
void declareJoin(CLI::App& join, JoinArguments& arguments) {
    declareChunks(join, arguments.chunks);
    join.add_option("-o,--output", arguments.output, "The movie to make")->required();
    join.add_flag("-y,--overwrite", arguments.overwrite, "Replace the output if it exists");
    join.add_option("--audio", arguments.sound, "A sound file to add");
    join.add_option("--audio-offset", arguments.soundOffset, "By which the sound begins later");
    join.add_option_function<std::string>(
            "--audio-units",
            [&arguments](const std::string& units) { arguments.offsetInFrames = units == "frames"; },
            "Of that offset")
        ->check(CLI::IsMember({"seconds", "frames"}));
    join.add_option("--timecode", arguments.timecode, "Of the first frame; else the first movie's");
    join.add_option("--reel", arguments.reel, "Reel name of that time code")->needs("--timecode");
    join.add_option("--metadata", arguments.metadata, "KEY=VALUE, added to the first movie's")
        ->allow_extra_args(false);
    join.add_flag("--fast-start,!--no-fast-start", arguments.indexFirst, "The index before the media");
}

}  // namespace

/// Ends with 0, with 1 and a line on standard error when it fails, or with the command line's code.
int main(int argc, char** argv) {
    // A limit on the size of files is a failure of the write, not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
    // Failures are told by us, one line each; the library's own remarks would drown them.
    av_log_set_level(AV_LOG_QUIET);
    CLI::App app{"Works on movie files that the QuickTime helper wrote."};
    app.require_subcommand(1);
    std::string path;
    ChunkArguments chunks;
    JoinArguments arguments;
    CLI::App* recover = app.add_subcommand("recover", "Make a movie whole that a crash has left unfinished");
    recover->add_option("FILE", path, "The movie; it is replaced when the whole one is on the disk")
        ->required();
    CLI::App* sound = app.add_subcommand("sound", "Tell which sound of a file a movie would take");
    sound->add_option("FILE", path, "Any file with sound")->required();
    CLI::App* check = app.add_subcommand("check", "Tell what is wrong with movies that are to be joined");
    declareChunks(*check, chunks);
    declareJoin(*app.add_subcommand("join", "Join movies of one form, without encoding"), arguments);
    CLI11_PARSE(app, argc, argv);
    try {
        if (recover->parsed()) {
            recoverCommand(path);
        } else if (sound->parsed()) {
            soundCommand(path);
        } else if (check->parsed()) {
            return checkCommand(chunks) ? 0 : failed;
        } else {
            joinCommand(arguments);
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
