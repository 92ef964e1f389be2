#include "worker/encode/PngEncoder.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <hwy/highway.h>
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>

#include "worker/Status.h"
#include "worker/picture/PicturePool.h"

namespace Morvane::Worker {

namespace {

constexpr int compressionLevel = 1;        // of libdeflate
constexpr std::uint8_t averageFilter = 3;  // of left and upper neighbour; the best one for grain
constexpr std::size_t signatureBytes = 8;
constexpr std::size_t lengthBytes = 4;
constexpr std::size_t typeBytes = 4;
constexpr std::size_t checkBytes = 4;

void putNumber(std::uint8_t* target, std::uint32_t number) {
    for (int byte = 0; byte < 4; ++byte)
        target[byte] = static_cast<std::uint8_t>(number >> (24 - 8 * byte));
}

std::uint32_t numberAt(const std::uint8_t* source) {
    std::uint32_t number = 0;
    for (int byte = 0; byte < 4; ++byte)
        number = number << 8 | source[byte];
    return number;
}

/// Fills in length, type and check of a chunk whose data, `length` bytes, lies in its place already. The
/// whole chunk's bytes.
std::size_t closeChunk(std::uint8_t* chunk, const char* type, std::size_t length) {
    putNumber(chunk, static_cast<std::uint32_t>(length));
    std::memcpy(chunk + lengthBytes, type, typeBytes);
    const std::uint32_t check = libdeflate_crc32(0, chunk + lengthBytes, typeBytes + length);
    putNumber(chunk + lengthBytes + typeBytes + length, check);
    return lengthBytes + typeBytes + length + checkBytes;
}

/// Beside it every pixel aspect leaves at least one pixel, or libav would leave the aspect out.
constexpr int smallSide = 128;

/// What libav puts before a picture's data, of a small picture, which costs next to nothing; then the true
/// size is put in.
std::vector<std::uint8_t> headOf(const EncodingPlan& plan) {
    EncodingPlan small = plan;
    small.width = small.height = smallSide;
    EncoderContext encoder(small);
    PicturePool pictures(small);
    const FramePointer black = pictures.take();
    std::memset(black->data[0], 0, static_cast<std::size_t>(black->linesize[0]) * smallSide);
    encoder.send(black.get());
    const PacketPointer packet = encoder.receive();
    if (!packet)
        throw StatusError(Status::CodecFailed, "PNG gave no packet for a frame");
    const std::span<const std::uint8_t> bytes(packet->data, static_cast<std::size_t>(packet->size));
    std::size_t end = signatureBytes;
    while (end + lengthBytes + typeBytes <= bytes.size() &&
           std::memcmp(&bytes[end + lengthBytes], "IDAT", typeBytes) != 0)
        end += lengthBytes + typeBytes + numberAt(&bytes[end]) + checkBytes;
    std::vector<std::uint8_t> head(bytes.begin(),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(std::min(end, bytes.size())));
    std::uint8_t* header = &head.at(signatureBytes);
    putNumber(header + lengthBytes + typeBytes, static_cast<std::uint32_t>(plan.width));
    putNumber(header + lengthBytes + typeBytes + 4, static_cast<std::uint32_t>(plan.height));
    closeChunk(header, "IHDR", numberAt(header));
    return head;
}

std::size_t bytesOfPixel(const EncodingPlan& plan) {
    return static_cast<std::size_t>(av_get_padded_bits_per_pixel(av_pix_fmt_desc_get(plan.picture->format))) /
           8;
}

/// Byte by byte what remains when the mean of the bytes one pixel to the left and one row up is foretold;
/// `pixel` bytes a pixel, 0 where there is no neighbour.
void averageDifferences(const std::uint8_t* row, const std::uint8_t* above, std::size_t pixel,
                        std::size_t count, std::uint8_t* target) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<std::uint8_t> lanes;
    const auto one = hn::Set(lanes, 1);
    const std::size_t step = hn::Lanes(lanes);
    std::size_t i = 0;
    for (; i < pixel; ++i)
        target[i] = static_cast<std::uint8_t>(row[i] - above[i] / 2);
    for (; i + step <= count; i += step) {
        const auto left = hn::LoadU(lanes, row + i - pixel);
        const auto up = hn::LoadU(lanes, above + i);
        // The mean that machines have rounds up, that of PNG down.
        const auto mean = hn::Sub(hn::AverageRound(left, up), hn::And(hn::Xor(left, up), one));
        hn::StoreU(hn::Sub(hn::LoadU(lanes, row + i), mean), lanes, target + i);
    }
    for (; i < count; ++i)
        target[i] = static_cast<std::uint8_t>(row[i] - (row[i - pixel] + above[i]) / 2);
}

}  // namespace

void PngEncoder::FreeCompressor::operator()(libdeflate_compressor* unused) const {
    libdeflate_free_compressor(unused);
}

bool PngEncoder::takes(const EncodingPlan& plan) {
    constexpr std::array formats{AV_PIX_FMT_RGB24, AV_PIX_FMT_RGBA, AV_PIX_FMT_RGB48BE, AV_PIX_FMT_RGBA64BE};
    const auto isUsual = [](const auto& option) {
        return (option.first == "compression_level" && option.second == "1") ||
               (option.first == "pred" && option.second == "avg");
    };
    return plan.encoder == "png" &&
           std::find(formats.begin(), formats.end(), plan.picture->format) != formats.end() &&
           std::all_of(plan.options.begin(), plan.options.end(), isUsual);
}

PngEncoder::PngEncoder(const EncodingPlan& plan)
    : EncoderContext(plan),
      height(static_cast<std::size_t>(plan.height)),
      pixelBytes(bytesOfPixel(plan)),
      rowBytes(static_cast<std::size_t>(plan.width) * pixelBytes),
      head(headOf(plan)),
      filtered(height * (1 + rowBytes)),
      compressor(libdeflate_alloc_compressor(compressionLevel)) {
    if (!compressor || mostPacketBytes() > INT32_MAX)
        throw std::bad_alloc();
}

PngEncoder::~PngEncoder() = default;

void PngEncoder::send(AVFrame* frame) {
    if (!frame)
        return;
    filter(*frame);
    waiting = packed();
}

PacketPointer PngEncoder::receive() {
    return std::move(waiting);
}

void PngEncoder::filter(const AVFrame& frame) {
    const std::vector<std::uint8_t> nothing(rowBytes);
    const std::uint8_t* above = nothing.data();
    std::uint8_t* target = filtered.data();
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* row = frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
        *target = averageFilter;
        averageDifferences(row, above, pixelBytes, rowBytes, target + 1);
        target += 1 + rowBytes;
        above = row;
    }
}

std::size_t PngEncoder::mostPacketBytes() const {
    constexpr std::size_t aroundChunk = lengthBytes + typeBytes + checkBytes;
    return head.size() + libdeflate_zlib_compress_bound(compressor.get(), filtered.size()) + 2 * aroundChunk;
}

/// The filtered picture as a packet: the head, one chunk of compressed data, the end.
PacketPointer PngEncoder::packed() {
    PacketPointer packet(av_packet_alloc());
    if (!packet || !(packet->buf = takePacketBuffer(mostPacketBytes())))
        throw std::bad_alloc();
    packet->data = packet->buf->data;
    std::copy(head.begin(), head.end(), packet->data);
    std::uint8_t* chunk = packet->data + head.size();
    const std::size_t length = libdeflate_zlib_compress(
        compressor.get(), filtered.data(), filtered.size(), chunk + lengthBytes + typeBytes,
        libdeflate_zlib_compress_bound(compressor.get(), filtered.size()));
    chunk += closeChunk(chunk, "IDAT", length);
    chunk += closeChunk(chunk, "IEND", 0);
    packet->size = static_cast<int>(chunk - packet->data);
    std::fill_n(chunk, AV_INPUT_BUFFER_PADDING_SIZE, std::uint8_t{0});
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->duration = 1;
    return packet;
}

std::unique_ptr<EncoderContext> createEncoder(const EncodingPlan& plan) {
    if (PngEncoder::takes(plan))
        return std::make_unique<PngEncoder>(plan);
    return std::make_unique<EncoderContext>(plan);
}

}  // namespace Morvane::Worker
