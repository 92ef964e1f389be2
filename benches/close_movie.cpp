#include "worker/LibavPointers.h"
#include "worker/movie/MovieFile.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <fmt/core.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

using namespace Morvane::Worker;

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

constexpr int width = 1024;
constexpr int height = 512;

void run(const std::string& folder, int frames, int framesPerSecond) {
    const std::string path = folder + "/close-movie.mov";
    const std::string copy = folder + "/close-movie-copy.mov";
    const ParametersPointer parameters(avcodec_parameters_alloc());
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_RAWVIDEO;
    parameters->codec_tag = MKTAG('2', 'v', 'u', 'y');
    parameters->format = AV_PIX_FMT_UYVY422;
    parameters->width = width;
    parameters->height = height;
    const PacketPointer packet(av_packet_alloc());
    av_new_packet(packet.get(), width * height * 2);
    std::mt19937 random(1);
    for (int i = 0; i < packet->size; ++i) {
        packet->data[i] = static_cast<std::uint8_t>(random());
    }
    MovieFile movie(path, {{parameters.get(), {24, 1}, "None"}, std::nullopt, {}});
    const Clock::time_point start = Clock::now();
    for (int frame = 0; frame < frames; ++frame) {
        packet->pts = packet->dts = frame;
        packet->flags = AV_PKT_FLAG_KEY;
        movie.addVideoPacket(*packet);
        if (framesPerSecond > 0) {
            std::this_thread::sleep_until(
                start + std::chrono::microseconds(std::int64_t{1'000'000} * frame / framesPerSecond));
        }
    }
    const double writing = secondsSince(start);
    const Clock::time_point finish = Clock::now();
    movie.finish(true);
    const double finishing = secondsSince(finish);
    const Clock::time_point copying = Clock::now();
    const int result = std::system(("cp '" + path + "' '" + copy + "'").c_str());
    const double copied = secondsSince(copying);
    fmt::print(
        "{} frames of 1 MiB: written {:.2f} s, finished with the index first {:.3f} s, cp {:.3f} s{}, ratio "
        "{:.2f}\n",
        frames, writing, finishing, copied, result == 0 ? "" : " (failed)", finishing / copied);
    std::filesystem::remove(path);
    std::filesystem::remove(copy);
}

}  // namespace

/// close_movie [FOLDER [FRAMES [FRAMES-PER-SECOND]]]: how long it takes to finish a movie of so many MiB,
/// 2048 unless told otherwise, with its index first, beside a `cp` of it. Without a rate the movie is written
/// as fast as it goes, which leaves as much as possible for the end.
int main(int argc, char** argv) {
    run(argc > 1 ? argv[1] : ".", argc > 2 ? std::atoi(argv[2]) : 2048, argc > 3 ? std::atoi(argv[3]) : 0);
    return 0;
}
