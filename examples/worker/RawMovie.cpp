#include "RawMovie.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

constexpr std::uint32_t ticksAFrame = 1000;
constexpr std::uint32_t mediaStart = 16;  // behind the head of "mdat", which has a 64-bit size

std::string big(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(value >> (8 * i));
    }
    return text;
}

std::string words(std::initializer_list<std::uint64_t> values) {
    std::string text;
    for (const std::uint64_t value : values) {
        text += big(value, 4);
    }
    return text;
}

std::string atom(const char* type, const std::string& content) {
    return big(content.size() + 8, 4) + type + content;
}

std::string zeros(std::size_t count) {
    return std::string(count, '\0');
}

const std::string unitMatrix = words({0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000});

char toByte(float value) {
    return static_cast<char>(static_cast<int>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f));
}

}  // namespace

RawMovie::RawMovie(const std::string& path, std::int32_t pixelsWide, std::int32_t pixelsHigh,
                   float framesPerSecond)
    : file(path, std::ios::binary | std::ios::trunc),
      width(static_cast<std::uint32_t>(pixelsWide)),
      height(static_cast<std::uint32_t>(pixelsHigh)),
      timeScale(static_cast<std::uint32_t>(std::lround(framesPerSecond * ticksAFrame))) {
    // The size is put in when it is known.
    file << big(1, 4) << "mdat" << big(mediaStart, 8);
}

bool RawMovie::add(const float* rgba) {
    std::string bytes;
    bytes.reserve(std::size_t{width} * height * 3);
    for (std::size_t pixel = 0; pixel < std::size_t{width} * height; ++pixel) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            bytes += toByte(rgba[pixel * 4 + channel]);
        }
    }
    frames += 1;
    return static_cast<bool>(file << bytes);
}

std::string RawMovie::index() const {
    const std::uint64_t duration = std::uint64_t{frames} * ticksAFrame;
    const std::uint64_t frameBytes = std::uint64_t{width} * height * 3;
    const std::string picture = zeros(6) + big(1, 2) + zeros(16) + big(width, 2) + big(height, 2) +
                                words({72 << 16, 72 << 16, 0}) + big(1, 2) + zeros(32) + big(24, 2) +
                                big(0xffff, 2);
    // One chunk a frame.
    std::string offsets;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        offsets += big(mediaStart + frame * frameBytes, 8);
    }
    const std::string table =
        atom("stsd", words({0, 1}) + atom("raw ", picture)) +
        atom("stts", words({0, 1, frames, ticksAFrame})) + atom("stsc", words({0, 1, 1, 1, 1})) +
        atom("stsz", words({0, frameBytes, frames})) + atom("co64", words({0, frames}) + offsets);
    const std::string reference = atom("dref", words({0, 1}) + atom("url ", words({1})));
    const std::string media =
        atom("mdhd", words({0, 0, 0, timeScale, duration, 0})) +
        atom("hdlr", words({0}) + "mhlrvide" + zeros(13)) +
        atom("minf", atom("vmhd", words({1, 0, 0})) + atom("dinf", reference) + atom("stbl", table));
    const std::string track = atom("tkhd", words({7, 0, 0, 1, 0, duration, 0, 0, 0, 0}) + unitMatrix +
                                               words({width << 16, height << 16})) +
                              atom("mdia", media);
    const std::string movie = words({0, 0, 0, timeScale, duration, 0x10000, 0x1000000, 0, 0}) + unitMatrix +
                              words({0, 0, 0, 0, 0, 0, 2});
    return atom("moov", atom("mvhd", movie) + atom("trak", track));
}

bool RawMovie::close() {
    const std::uint64_t mediaEnd = static_cast<std::uint64_t>(file.tellp());
    file << index();
    file.seekp(8);
    file << big(mediaEnd, 8);
    file.close();
    return file.good();
}
