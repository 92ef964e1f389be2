#include "Readers.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <memory>
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

struct Free {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

int receiveFrames(AVCodecContext& codec, AVFrame& frame) {
    int frames = 0;
    while (avcodec_receive_frame(&codec, &frame) >= 0) {
        frames += frame.decode_error_flags == 0 && !(frame.flags & AV_FRAME_FLAG_CORRUPT);
    }
    return frames;
}

}  // namespace

int libraryFrames(const std::string& movie) {
    av_log_set_level(AV_LOG_FATAL);
    AVFormatContext* opened = nullptr;
    const int result = avformat_open_input(&opened, movie.c_str(), nullptr, nullptr);
    const std::unique_ptr<AVFormatContext, Free> format(opened);
    if (result < 0 || format->nb_streams == 0) {
        return 0;
    }
    const AVCodecParameters& parameters = *format->streams[0]->codecpar;
    const std::unique_ptr<AVCodecContext, Free> codec(avcodec_alloc_context3(nullptr));
    avcodec_parameters_to_context(codec.get(), &parameters);
    codec->err_recognition = AV_EF_EXPLODE;
    if (avcodec_open2(codec.get(), avcodec_find_decoder(parameters.codec_id), nullptr) < 0) {
        throw std::runtime_error("cannot decode " + movie);
    }
    const std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
    const std::unique_ptr<AVFrame, Free> frame(av_frame_alloc());
    int frames = 0;
    while (av_read_frame(format.get(), packet.get()) >= 0) {
        if (packet->stream_index == 0) {
            avcodec_send_packet(codec.get(), packet.get());
            frames += receiveFrames(*codec, *frame);
        }
        av_packet_unref(packet.get());
    }
    avcodec_send_packet(codec.get(), nullptr);
    return frames + receiveFrames(*codec, *frame);
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
