#include "host/app/Command.h"
#include "host/app/GivenOptions.h"
#include "host/app/Tool.h"
#include "host/render/OutputPath.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Example:\n"
    "  corvel join shot.1.mov shot.2.mov shot.3.mov -o shot.mov --audio mix.wav\n"
    "\n"
    "The movies must be whole and of one form. Before anything is written, codec, size, rate, colour and "
    "set-up are\n"
    "compared and every difference is named, and the first and the last frame of each movie are decoded. Sound "
    "in them\n"
    "is left out; time code and metadata are the first one's unless given here.\n"
    "\n"
    "Codecs whose pictures stand alone (ProRes, DNxHR, Motion JPEG, PNG and others; also any with "
    "--keyframerate 1)\n"
    "give the packets of one render of the whole. With others (H.264, HEVC, MPEG-4) each movie begins with a "
    "key frame\n"
    "of its own, and the codec's control of the rate starts anew: 240 frames of H.264 in 8 chunks took 2 percent "
    "more bytes.\n"
    "\n"
    "Exit codes: 0 done, 1 they can't be joined; the output is then left as it was.";

/// Hands its command line to a program beside the helper: the host itself does not touch movie files.
class JoinCommand : public Command {
public:
    std::string name() const override { return "join"; }
    std::string summary() const override { return "Join movies of one form into one, without encoding"; }
    void declare(CLI::App& app) override;
    Exit run(Session& session) override;

private:
    void declareSound(CLI::App& app);
    void declareMetadata(CLI::App& app);

    CLI::App* options = nullptr;
    std::vector<std::string> chunks;
    std::string output;
    // Only seen by the program that joins.
    bool overwrite = false;
    bool indexFirst = true;
    std::string frames, sound, offset, units, timecode, reel;
    std::vector<std::string> metadata;
};

void JoinCommand::declare(CLI::App& app) {
    options = &app;
    app.add_option("CHUNK", chunks, "The movies, in the order in which they are played")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", output, "The movie to make")->required()->type_name("OUTPUT");
    app.add_flag("-y,--overwrite", overwrite, "Replace an existing movie, once the new one is whole");
    app.add_option("--frames", frames, "How many frames each movie must hold: 48,48,30 (default: any)")
        ->type_name("N,N,...");
    app.add_flag(
        "--fast-start,!--no-fast-start", indexFirst,
        "Index in front of the frames, so that the movie plays while it is downloaded (default: on)");
    declareSound(app);
    declareMetadata(app);
    app.footer(footer);
}

void JoinCommand::declareSound(CLI::App& app) {
    constexpr const char* group = "Sound";
    app.add_option("--audio", sound, "Sound for the movie")->type_name("FILE")->group(group);
    app.add_option("--audio-offset", offset,
                   "When the sound starts; negative: its beginning is cut off (default: 0)")
        ->type_name("N")
        ->group(group);
    app.add_option("--audio-units", units, "What the offset counts: seconds or frames (default: seconds)")
        ->check(
            CLI::IsMember(std::vector<std::string>{"seconds", "frames"}, CLI::ignore_case).description(""))
        ->type_name("UNIT")
        ->group(group);
}

void JoinCommand::declareMetadata(CLI::App& app) {
    constexpr const char* group = "Time code and metadata";
    app.add_option("--timecode", timecode, "Time code of the first frame (default: the first movie's)")
        ->type_name("HH:MM:SS:FF")
        ->group(group);
    app.add_option("--reel", reel, "Reel name of that time code")
        ->type_name("NAME")
        ->needs("--timecode")
        ->group(group);
    app.add_option("--metadata", metadata,
                   "Metadata beside the first movie's, such as title=Opening; may be given several times")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false)
        ->group(group);
}

Exit JoinCommand::run(Session&) {
    std::vector<std::string> words{"join", "--output=" + outputBehindLinks(output)};
    const std::vector<std::string> given = givenOptions(*options, {"--output"});
    words.insert(words.end(), given.begin(), given.end());
    words.emplace_back("--");
    words.insert(words.end(), chunks.begin(), chunks.end());
    becomeTool("corvel-movie", words);
}

}  // namespace

std::unique_ptr<Command> joinCommand() {
    return std::make_unique<JoinCommand>();
}

}  // namespace Corvel
