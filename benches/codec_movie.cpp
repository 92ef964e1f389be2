#include "tests/integration/codecs/CodecTrial.h"
#include "worker/codec/QualityText.h"
#include "worker/write/OpenMovie.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

using namespace Morvane::Worker;
using namespace Morvane::Worker::Trial;
using Json = nlohmann::ordered_json;

namespace {

constexpr SizeRule::Size usualSize = {480, 272};
/// Of a codec's fixed sizes the first that is not tiny.
constexpr int leastWidth = 352;

/// What is asked for on the command line, behind the command's name.
struct Wish {
    const Codec* codec = nullptr;
    int quality = 4;
    bool alpha = false;
    int frames = 12;
    std::string file;
    std::string settings;
};

SizeRule::Size sizeFor(const Codec& codec) {
    const auto found = std::find_if(codec.sizes.only.begin(), codec.sizes.only.end(),
                                    [](const auto& size) { return size.width >= leastWidth; });
    return codec.sizes.only.empty() ? usualSize : *found;
}

EncodingPlan planFor(const Wish& wish) {
    EncodingRequest request;
    request.settings = Settings::parse(wish.settings, *wish.codec);
    request.width = sizeFor(*wish.codec).width;
    request.height = sizeFor(*wish.codec).height;
    request.quality = wish.quality;
    request.hasAlpha = wish.alpha;
    return planEncoding(request);
}

/// The pictures, made once and kept beside the movie: making them takes longer than most codecs.
std::vector<Pixels> picturesFor(const Wish& wish) {
    const SizeRule::Size size = sizeFor(*wish.codec);
    const std::string kept =
        (std::filesystem::path(wish.file).parent_path() /
         fmt::format("pictures-{}x{}-{}-{}", size.width, size.height, wish.frames, wish.alpha ? 4 : 3))
            .string();
    const std::size_t floats = std::size_t{4} * size.width * size.height;
    const auto bytes = static_cast<std::streamsize>(floats * sizeof(float));
    std::vector<Pixels> pictures;
    std::ifstream file(kept, std::ios::binary);
    Pixels pixels(floats);
    while (file.read(reinterpret_cast<char*>(pixels.data()), bytes))
        pictures.push_back(pixels);
    if (pictures.size() == static_cast<std::size_t>(wish.frames))
        return pictures;
    pictures.clear();
    std::ofstream made(kept, std::ios::binary);
    for (int frame = 0; frame < wish.frames; ++frame) {
        pictures.push_back(naturalPicture(size.width, size.height, frame, wish.alpha));
        made.write(reinterpret_cast<const char*>(pictures.back().data()), bytes);
    }
    return pictures;
}

Json listed() {
    Json list = Json::array();
    for (const Codec& codec : codecTable()) {
        const SizeRule::Size size = sizeFor(codec);
        list.push_back({{"type", codec.type},
                        {"name", codec.name},
                        {"width", size.width},
                        {"height", size.height},
                        {"alpha", codec.hasAlpha()},
                        {"qualities", codec.hasQuality() ? 6 : 1},
                        {"meaning", describeQualities(codec)},
                        {"lossless", codec.lossless == Lossless::Always  ? "always"
                                     : codec.lossless == Lossless::Never ? "never"
                                                                         : "at quality 5"}});
    }
    return list;
}

/// Milliseconds of processor time a frame, all threads together: other programs do not show in it.
double timeOfMovie(const OpenMovie::Options& options, const std::vector<Pixels>& pictures) {
    const std::clock_t start = std::clock();
    OpenMovie movie(options);
    for (const Pixels& pixels : pictures)
        movie.addFrame(reinterpret_cast<const std::byte*>(pixels.data()));
    movie.finishVideo();
    const std::clock_t taken = std::clock() - start;
    movie.close(true);
    return 1000.0 * static_cast<double>(taken) / CLOCKS_PER_SEC / static_cast<double>(pictures.size());
}

/// The plan's options as the `ffmpeg` tool has them, and how long a frame took.
Json written(const Wish& wish) {
    OpenMovie::Options options;
    options.plan = planFor(wish);
    options.path = wish.file;
    const auto pictures = picturesFor(wish);
    const double milliseconds = timeOfMovie(options, pictures);
    Json encoderOptions = Json::object();
    for (const auto& [key, value] : options.plan.options)
        encoderOptions[key] = value;
    return {{"milliseconds", milliseconds},
            {"encoder", options.plan.encoder},
            {"options", encoderOptions},
            {"filter", options.plan.codec->bitstreamFilter ? options.plan.codec->bitstreamFilter : ""},
            {"format", av_get_pix_fmt_name(options.plan.picture->format)},
            {"matrix", av_color_space_name(options.plan.colour.matrix)},
            {"range", av_color_range_name(options.plan.colour.range)}};
}

/// The source as the `ffmpeg` tool can read it: 16 bits a channel, RGBA, little-endian.
Json sourceWritten(const Wish& wish) {
    std::ofstream file(wish.file, std::ios::binary);
    for (const Pixels& pixels : picturesFor(wish))
        for (const float value : pixels) {
            const long sample = std::lround(std::clamp(value, 0.0F, 1.0F) * 65535);
            file.put(static_cast<char>(sample & 0xFF)).put(static_cast<char>(sample >> 8));
        }
    return {{"written", file.good()}};
}

Encoded readMovie(const Wish& wish) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, wish.file.c_str(), nullptr, nullptr) < 0)
        throw std::runtime_error("cannot open " + wish.file);
    const std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> format(
        opened, [](AVFormatContext* context) { avformat_close_input(&context); });
    const int stream = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0)
        throw std::runtime_error("no pictures in " + wish.file);
    Encoded encoded;
    encoded.plan = planFor(wish);
    encoded.parameters.reset(avcodec_parameters_alloc());
    avcodec_parameters_copy(encoded.parameters.get(), opened->streams[stream]->codecpar);
    for (PacketPointer packet(av_packet_alloc()); av_read_frame(opened, packet.get()) >= 0;
         packet.reset(av_packet_alloc()))
        if (packet->stream_index == stream)
            encoded.packets.push_back(std::move(packet));
    return encoded;
}

Json measured(const Wish& wish) {
    const Encoded encoded = readMovie(wish);
    const auto frames = decode(encoded);
    const auto pictures = picturesFor(wish);
    if (frames.size() != pictures.size())
        throw std::runtime_error(fmt::format("{} of {} frames", frames.size(), pictures.size()));
    double sum = 0;
    double alphaError = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Pixels decoded = rgbOf(*frames[i], encoded.plan.colour);
        sum += psnr(pictures[i], decoded);
        for (std::size_t alpha = 3; alpha < decoded.size(); alpha += 4)
            alphaError = std::max<double>(alphaError, std::abs(decoded[alpha] - pictures[i][alpha]));
    }
    return {{"psnr", sum / static_cast<double>(frames.size())},
            {"alpha_error", alphaError},
            {"bytes", encoded.bytes() / frames.size()}};
}

Wish parse(int argc, char** argv) {
    if (argc < 7)
        throw std::runtime_error(
            "usage: codec_movie write|source|measure TYPE QUALITY ALPHA FRAMES FILE [SETTINGS]");
    Wish wish;
    wish.codec = findCodec(argv[2]);
    if (!wish.codec)
        throw std::runtime_error(fmt::format("there is no codec {}", argv[2]));
    wish.quality = std::atoi(argv[3]);
    wish.alpha = std::atoi(argv[4]) != 0;
    wish.frames = std::atoi(argv[5]);
    wish.file = argv[6];
    wish.settings = argc > 7 ? argv[7] : "";
    return wish;
}

Json answer(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "list")
        return listed();
    const Wish wish = parse(argc, argv);
    if (command == "write")
        return written(wish);
    return command == "source" ? sourceWritten(wish) : measured(wish);
}

}  // namespace

/// One step of benches/codecs.py, its result as JSON:
///   codec_movie list                                               every codec and the size it is tried at
///   codec_movie write TYPE QUALITY ALPHA FRAMES FILE [SETTINGS]    a movie, as the worker writes it
///   codec_movie source TYPE QUALITY ALPHA FRAMES FILE              the same frames without compression
///   codec_movie measure TYPE QUALITY ALPHA FRAMES FILE [SETTINGS]  any movie of those frames, decoded
int main(int argc, char** argv) try {
    fmt::print("{}\n", answer(argc, argv).dump());
    return 0;
} catch (const std::exception& error) {
    fmt::print(stderr, "codec_movie: {}\n", error.what());
    return 1;
}
