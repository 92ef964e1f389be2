#include "worker/output/NetworkPort.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

#include <fmt/format.h>

#include <algorithm>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

constexpr int planeAlignment = 64;        // bytes
constexpr std::size_t longestName = 250;  // bytes that the stream's service description holds

AVRational rateOf(const OutputMode& mode) {
    return {static_cast<int>(mode.rate.frames), static_cast<int>(mode.rate.seconds)};
}

/// The picture that an H.264 movie of this mode would have: 4:2:0, BT.709, video range.
EncodingPlan planFor(const OutputMode& mode) {
    EncodingRequest request{.settings =
                                Settings::parse("bitdepth=8:chroma=420:threads=2", *findCodec("avc1"))};
    request.width = mode.width;
    request.height = mode.height;
    request.rate = rateOf(mode);
    return planEncoding(request);
}

/// Cuts `name` to what the stream can hold, at the start of a character.
std::string serviceNameOf(const std::string& name) {
    std::size_t length = std::min(name.size(), longestName);
    while (length < name.size() && length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
        --length;
    return name.substr(0, length);
}

}  // namespace

void NetworkPort::FreeStream::operator()(AVFormatContext* context) const {
    avio_closep(&context->pb);
    avformat_free_context(context);
}

NetworkPort::NetworkPort(const OutputMode& mode, const NetworkAddress& address,
                         const std::string& serviceName)
    : mode(mode),
      address(address),
      plan(planFor(mode)),
      converter(plan),
      converted(av_frame_alloc()),
      prepared(av_frame_alloc()) {
    if (!converted || !prepared)
        throw StatusError(Status::NoMemory, "cannot open the network device: not enough memory");
    openEncoder();
    openStream(serviceName);
}

NetworkPort::~NetworkPort() = default;

void NetworkPort::openEncoder() {
    encoder.reset(avcodec_alloc_context3(avcodec_find_encoder_by_name(encoderName)));
    if (!encoder)
        throw StatusError(Status::CodecFailed, "cannot open the network device: no H.264 encoder");
    encoder->width = mode.width;
    encoder->height = mode.height;
    encoder->pix_fmt = plan.picture->format;
    encoder->sample_aspect_ratio = {1, 1};
    encoder->framerate = rateOf(mode);
    encoder->time_base = av_inv_q(encoder->framerate);
    encoder->color_primaries = plan.colour.primaries;
    encoder->color_trc = plan.colour.transfer;
    encoder->colorspace = plan.colour.matrix;
    encoder->color_range = plan.colour.range;
    encoder->gop_size = std::max(1, encoder->framerate.num / encoder->framerate.den / 2);
    // Every picture leaves as soon as it is shown, none waits for a later one.
    av_opt_set(encoder->priv_data, "preset", "ultrafast", 0);
    av_opt_set(encoder->priv_data, "tune", "zerolatency", 0);
    av_opt_set(encoder->priv_data, "crf", "12", 0);
    // About two bits a pixel at most, spread over a quarter of a second: a burst that receivers' sockets
    // hold.
    const std::int64_t bitsASecond =
        std::int64_t{2} * mode.width * mode.height * mode.rate.frames / mode.rate.seconds;
    encoder->rc_max_rate = bitsASecond;
    encoder->rc_buffer_size = static_cast<int>(std::min<std::int64_t>(bitsASecond / 4, 1 << 30));
    check(avcodec_open2(encoder.get(), encoder->codec, nullptr));
}

void NetworkPort::openStream(const std::string& serviceName) {
    // Seven transport packets a datagram: the largest number that passes an Ethernet whole.
    const std::string url = fmt::format("udp://{}?pkt_size=1316", address.text());
    AVFormatContext* context = nullptr;
    check(avformat_alloc_output_context2(&context, nullptr, formatName, url.c_str()));
    stream.reset(context);
    AVStream* video = avformat_new_stream(context, nullptr);
    if (!video)
        throw StatusError(Status::NoMemory, "cannot open the network device: not enough memory");
    check(avcodec_parameters_from_context(video->codecpar, encoder.get()));
    video->time_base = encoder->time_base;
    video->avg_frame_rate = encoder->framerate;
    av_dict_set(&context->metadata, "service_name", serviceNameOf(serviceName).c_str(), 0);
    av_dict_set(&context->metadata, "service_provider", "Corvel", 0);
    context->flags |= AVFMT_FLAG_FLUSH_PACKETS;
    check(avio_open(&context->pb, url.c_str(), AVIO_FLAG_WRITE));
    check(avformat_write_header(context, nullptr));
}

std::size_t NetworkPort::pictureBytes() const {
    const int bytes = av_image_get_buffer_size(plan.picture->format, mode.width, mode.height, planeAlignment);
    check(bytes);
    return static_cast<std::size_t>(bytes);
}

void NetworkPort::describe(AVFrame& frame, std::uint8_t* memory) const {
    frame.format = plan.picture->format;
    frame.width = mode.width;
    frame.height = mode.height;
    check(av_image_fill_arrays(frame.data, frame.linesize, memory, plan.picture->format, mode.width,
                               mode.height, planeAlignment));
}

void NetworkPort::convert(const float* rgba, std::uint8_t* picture) {
    describe(*converted, picture);
    converter.convert(rgba, *converted);
}

void NetworkPort::prepare(const std::uint8_t* picture, std::int64_t frame) {
    // The library's frames know no constant pictures; the encoder only reads.
    describe(*prepared, const_cast<std::uint8_t*>(picture));
    prepared->pts = frame;
    encode(prepared.get());
}

void NetworkPort::show(const std::uint8_t* /*picture*/) {
    sendEncoded();
}

void NetworkPort::finish() {
    encode(nullptr);
    sendEncoded();
    check(av_write_trailer(stream.get()));
}

void NetworkPort::encode(const AVFrame* frame) {
    check(avcodec_send_frame(encoder.get(), frame));
    for (;;) {
        PacketPointer packet(av_packet_alloc());
        if (!packet)
            throw StatusError(Status::NoMemory, "cannot send to the network device: not enough memory");
        const int result = avcodec_receive_packet(encoder.get(), packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result);
        encoded.push_back(std::move(packet));
    }
}

void NetworkPort::sendEncoded() {
    AVStream& video = *stream->streams[0];
    for (const PacketPointer& packet : encoded) {
        packet->duration = 1;
        packet->stream_index = video.index;
        av_packet_rescale_ts(packet.get(), encoder->time_base, video.time_base);
        check(av_write_frame(stream.get(), packet.get()));
    }
    encoded.clear();
}

void NetworkPort::check(int result) const {
    if (result >= 0)
        return;
    throw StatusError(statusOfLibraryError(result, Status::InputOutput),
                      fmt::format("cannot send to Network {}: {}", address.text(), libraryReason(result)));
}

}  // namespace Morvane::Worker
