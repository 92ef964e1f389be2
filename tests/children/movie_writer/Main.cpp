#include "Faults.h"
#include "TestPackets.h"
#include "worker/Status.h"
#include "worker/movie/MovieFile.h"

#include <fmt/core.h>
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <chrono>
#include <csignal>
#include <map>
#include <string>
#include <thread>

using namespace Morvane;
using namespace Morvane::Worker;

namespace {

struct Arguments {
    std::string path;
    std::string encoder = "mjpeg";
    int frames = 24;
    int width = 64;
    int height = 48;
    int interval = 0;  ///< microseconds from one packet to the next
    bool indexLast = false;
    bool inPlace = false;
    bool leave = false;
    bool fragmentEach = false;  ///< write each packet at once
    std::string sound;
    double offset = 0;  ///< seconds
    Tests::Fault fault = Tests::Fault::None;
    int call = 0;
};

/// The parent learns of each packet when the movie file has taken it.
void tell(char what) {
    if (write(STDOUT_FILENO, &what, 1) != 1) {
        _exit(3);
    }
}

void writeMovie(const Arguments& arguments) {
    Tests::TestPackets::Request request;
    request.encoder = arguments.encoder;
    request.pixels = arguments.encoder == "mjpeg" ? AV_PIX_FMT_YUVJ422P : AV_PIX_FMT_YUV420P;
    request.frames = arguments.frames;
    request.width = arguments.width;
    request.height = arguments.height;
    const Tests::TestPackets packets(request);
    MovieFile::Options options{packets.track(), TimecodeTrack{24, 86400, "A001"}, {{"title", "Ball"}}};
    if (arguments.inPlace) {
        options.fewestBytesInPlace = 0;
    }
    if (arguments.fragmentEach) {
        options.longestWait = std::chrono::milliseconds(0);
    }
    Tests::injectFault(arguments.fault, arguments.call);
    MovieFile movie(arguments.path, options);
    for (AVPacket* packet : packets.packets()) {
        movie.addVideoPacket(*packet);
        tell('p');
        std::this_thread::sleep_for(std::chrono::microseconds(arguments.interval));
    }
    if (!arguments.sound.empty()) {
        movie.addAudioFile(arguments.sound, arguments.offset);
    }
    if (!arguments.leave) {
        movie.finish(!arguments.indexLast);
        tell('f');
    }
}

}  // namespace

/// Prints "p" for each packet taken, "f" when the movie is finished. Ends with 0, or with 2 and the reason on
/// standard error.
int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);
    Arguments arguments;
    CLI::App app{"Writes a movie for a test."};
    app.add_option("path", arguments.path)->required();
    app.add_option("--encoder", arguments.encoder);
    app.add_option("--frames", arguments.frames);
    app.add_option("--width", arguments.width);
    app.add_option("--height", arguments.height);
    app.add_option("--interval", arguments.interval);
    app.add_option("--sound", arguments.sound);
    app.add_option("--offset", arguments.offset);
    app.add_flag("--index-last", arguments.indexLast);
    app.add_flag("--in-place", arguments.inPlace);
    app.add_flag("--leave", arguments.leave);
    app.add_flag("--fragment-each", arguments.fragmentEach);
    const std::map<std::string, Tests::Fault> faults = {
        {"kill", Tests::Fault::Kill}, {"full", Tests::Fault::DiskFull}, {"error", Tests::Fault::DiskError}};
    app.add_option("--fault", arguments.fault)->transform(CLI::CheckedTransformer(faults));
    app.add_option("--call", arguments.call);
    CLI11_PARSE(app, argc, argv);
    int result = 0;
    try {
        writeMovie(arguments);
    } catch (const StatusError& error) {
        fmt::print(stderr, "{} ({})\n", error.what(), static_cast<int>(error.status));
        result = 2;
    }
    if (arguments.call > Tests::callsCounted()) {
        tell('e');  // that call never came
    }
    return result;
}
