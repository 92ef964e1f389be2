#include "Readers.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace Morvane::Tests {

std::string outputOf(const std::vector<std::string>& arguments) {
    int ends[2] = {};
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(ends[1]);
    std::string output;
    char buffer[65536];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
        output.append(buffer, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(arguments.front() + " failed on " + arguments.back());
    }
    return output;
}

nlohmann::json ffprobe(const std::string& movie, const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"ffprobe", "-v", "error", "-of", "json"};
    if (options.empty()) {
        arguments.insert(arguments.end(), {"-show_format", "-show_streams", "-count_packets"});
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(movie);
    return nlohmann::json::parse(outputOf(arguments));
}

nlohmann::json mediainfo(const std::string& movie) {
    return nlohmann::json::parse(outputOf({"mediainfo", "--Output=JSON", "--Full", movie}))
        .at("media")
        .at("track");
}

nlohmann::json exiftool(const std::string& movie) {
    return nlohmann::json::parse(outputOf({"exiftool", "-j", "-ee", "-n", movie})).at(0);
}

int decodedFrames(const std::string& movie) {
    const std::string hashes =
        outputOf({"ffmpeg", "-v", "error", "-xerror", "-i", movie, "-map", "0:v", "-f", "framemd5", "-"});
    int frames = 0;
    for (std::size_t line = 0; line < hashes.size(); line = hashes.find('\n', line) + 1) {
        frames += hashes[line] != '#';
    }
    return frames;
}

namespace {

std::vector<float> floatsOf(const std::string& bytes) {
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

}  // namespace

std::vector<float> soundByFfmpeg(const std::string& movie) {
    return floatsOf(outputOf({"ffmpeg", "-v", "error", "-i", movie, "-map", "0:a:0", "-f", "f32le", "-"}));
}

std::vector<float> soundByGstreamer(const std::string& movie, int channels) {
    const std::string caps =
        "audio/x-raw,format=F32LE,layout=interleaved,channels=" + std::to_string(channels);
    return floatsOf(outputOf({"gst-launch-1.0", "-q", "filesrc", "location=" + movie, "!", "qtdemux",
                              "name=d", "d.audio_0", "!", "queue", "!", "decodebin", "!", "audioconvert", "!",
                              caps, "!", "fdsink", "fd=1"}));
}

}  // namespace Morvane::Tests
