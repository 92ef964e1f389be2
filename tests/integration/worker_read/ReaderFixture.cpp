#include "tests/integration/worker_read/ReaderFixture.h"

#include <cmath>

#include "tests/integration/real_worker/Commands.h"

namespace Morvane::Testing {

void ReaderFixture::TearDown() {
    sut.reset();
    WorkerFixture::TearDown();
}

void ReaderFixture::runFfmpeg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"ffmpeg", "-v", "error", "-nostdin", "-y"});
    outputOf(arguments);
}

std::string ReaderFixture::makeMovie(const std::string& name, int frames,
                                     const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {
        "-f", "lavfi", "-i", "testsrc2=size=160x96:rate=25", "-frames:v", std::to_string(frames)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(path(name));
    runFfmpeg(arguments);
    return path(name);
}

void ReaderFixture::open(const std::string& movie, int mode) {
    sut.reset();
    sut = std::make_unique<QuickTime::QuickTimeCodecReaderIPCController>(newBridgeName());
    openStatus = sut->openFile(movie, mode);
}

MovieInfo ReaderFixture::info() {
    MovieInfo info;
    sut->getInfo(info.width, info.height, info.channels, info.rate, info.aspectNumerator,
                 info.aspectDenominator, info.bits);
    info.frames = sut->getFrameCount();
    return info;
}

std::map<std::string, std::string> ReaderFixture::metadata() {
    std::map<std::string, std::string> metadata;
    sut->getMetadata(metadata);
    return metadata;
}

std::vector<float> ReaderFixture::read(int number) {
    const MovieInfo movie = info();
    std::vector<float> pixels(static_cast<std::size_t>(movie.width) * static_cast<std::size_t>(movie.height) *
                              4);
    readStatus = sut->readFrame(number, reinterpret_cast<char*>(pixels.data()));
    return readStatus == 0 ? pixels : std::vector<float>{};
}

std::vector<std::vector<float>> ReaderFixture::framesByFfmpeg(const std::string& movie,
                                                              const std::string& filter,
                                                              std::size_t samples) {
    const std::string raw = outputOf({"ffmpeg", "-v", "error", "-nostdin", "-i", movie, "-map", "0:v:0",
                                      "-vsync", "passthrough", "-vf", filter, "-f", "rawvideo", "-"});
    std::vector<std::vector<float>> frames;
    for (std::size_t at = 0; at + samples <= raw.size(); at += samples) {
        std::vector<float>& frame = frames.emplace_back();
        for (std::size_t sample = at; sample < at + samples; ++sample)
            frame.push_back(static_cast<float>(static_cast<unsigned char>(raw[sample])) / 255.0f);
    }
    return frames;
}

double ReaderFixture::similarity(const std::vector<float>& rgba, const std::vector<float>& rgb) {
    if (rgba.empty() || rgba.size() / 4 != rgb.size() / 3)
        return 0;
    double error = 0;
    for (std::size_t pixel = 0; pixel < rgb.size() / 3; ++pixel)
        for (std::size_t channel = 0; channel < 3; ++channel) {
            // ffmpeg's numbers end at 0 and 1.
            const double ours = std::fmin(1.0, std::fmax(0.0, rgba[4 * pixel + channel]));
            const double difference = ours - rgb[3 * pixel + channel];
            error += difference * difference;
        }
    return -10 * std::log10(error / static_cast<double>(rgb.size()) + 1e-12);
}

}  // namespace Morvane::Testing
