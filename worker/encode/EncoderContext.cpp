#include "worker/encode/EncoderContext.h"

#include "worker/Status.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/opt.h>
}

#include <fmt/format.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace Morvane::Worker {

namespace {

/// MPEG-4 streams count time in at most this many ticks a second.
constexpr int mostTicks = 65535;

/// The rate that the encoder is told. One tick is one frame whatever it is; only streams that state their
/// rate themselves notice where it had to be rounded.
AVRational statedRate(const EncodingPlan& plan) {
    AVRational rate = plan.rate;
    if (rate.num > mostTicks)
        av_reduce(&rate.num, &rate.den, plan.rate.num, plan.rate.den, mostTicks);
    return rate;
}

class OptionDictionary {
public:
    OptionDictionary() = default;
    ~OptionDictionary() { av_dict_free(&entries); }
    OptionDictionary(const OptionDictionary&) = delete;
    OptionDictionary& operator=(const OptionDictionary&) = delete;

    AVDictionary* entries = nullptr;
};

}  // namespace

EncoderContext::EncoderContext(const EncodingPlan& encodingPlan) : plan(encodingPlan) {
    const AVCodec* encoder = avcodec_find_encoder_by_name(plan.encoder.c_str());
    if (!encoder)
        throw StatusError(
            Status::NotSupportedByCodec,
            fmt::format("{} needs the encoder {}, which this libav lacks", plan.codec->name, plan.encoder));
    context.reset(avcodec_alloc_context3(encoder));
    if (!context)
        throw std::bad_alloc();
    context->opaque = this;
    context->get_encode_buffer = givePacketBuffer;
    configure();
    open();
    if (plan.codec->bitstreamFilter)
        openFilter();
}

AVBufferRef* EncoderContext::takePacketBuffer(std::size_t bytes) {
    // Packets differ in size; with some room to spare, buffers seldom do.
    const std::size_t needed = bytes + AV_INPUT_BUFFER_PADDING_SIZE;
    const std::size_t unit = std::bit_ceil(needed) / 8;
    return packetMemory.take((needed + unit - 1) / unit * unit);
}

int EncoderContext::givePacketBuffer(AVCodecContext* encoder, AVPacket* packet, int flags) {
    if ((encoder->codec->capabilities & AV_CODEC_CAP_DR1) == 0)
        return avcodec_default_get_encode_buffer(encoder, packet, flags);
    packet->buf = static_cast<EncoderContext*>(encoder->opaque)
                      ->takePacketBuffer(static_cast<std::size_t>(packet->size));
    if (packet->buf == nullptr)
        return AVERROR(ENOMEM);
    packet->data = packet->buf->data;
    return 0;
}

void EncoderContext::configure() {
    context->width = plan.width;
    context->height = plan.height;
    context->pix_fmt = plan.picture->format;
    context->framerate = statedRate(plan);
    context->time_base = av_inv_q(context->framerate);
    context->sample_aspect_ratio = plan.aspect;
    context->thread_count = plan.encoderThreads;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    if (plan.keyFrameRate > 0 && !plan.codec->intraOnly)
        context->gop_size = plan.keyFrameRate;
    // The raw encoder would turn the channels round once more for a type whose pictures already have its
    // order.
    if (plan.picture->order != SampleOrder::ArgbBigEndian16)
        context->codec_tag = plan.tag;
    if (plan.fields != AV_FIELD_PROGRESSIVE) {
        context->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
        context->field_order = plan.fields;
    }
    setColour();
}

void EncoderContext::setColour() {
    context->color_primaries = plan.colour.primaries;
    context->color_trc = plan.colour.transfer;
    context->colorspace = plan.colour.matrix;
    context->color_range = plan.colour.range;
    context->chroma_sample_location =
        plan.codec->colour == ColourModel::Jpeg ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
}

void EncoderContext::setQuantiser(const std::string& value) {
    const int quantiser = std::atoi(value.c_str());
    context->flags |= AV_CODEC_FLAG_QSCALE;
    context->global_quality = quantiser * FF_QP2LAMBDA;
    // The encoders of the MPEG family stay above 2 unless they are told.
    context->qmin = std::min(context->qmin, quantiser);
}

void EncoderContext::open() {
    OptionDictionary options;
    for (const auto& [key, value] : plan.options) {
        if (key == "qscale")
            setQuantiser(value);
        else if (av_dict_set(&options.entries, key.c_str(), value.c_str(), 0) < 0)
            throw std::bad_alloc();
    }
    const int error = avcodec_open2(context.get(), nullptr, &options.entries);
    if (error < 0)
        throw StatusError(statusOfLibraryError(error, Status::NotSupportedByCodec),
                          fmt::format("{} cannot encode {} x {} with these settings: {}", plan.codec->name,
                                      plan.width, plan.height, libraryReason(error)));
    if (const AVDictionaryEntry* left = av_dict_get(options.entries, "", nullptr, AV_DICT_IGNORE_SUFFIX))
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("the encoder {} has no option {}", plan.encoder, left->key));
}

void EncoderContext::openFilter() {
    AVBSFContext* made = nullptr;
    const AVBitStreamFilter* kind = av_bsf_get_by_name(plan.codec->bitstreamFilter);
    if (!kind || av_bsf_alloc(kind, &made) < 0)
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("{} needs the bitstream filter {}, which this libav lacks",
                                      plan.codec->name, plan.codec->bitstreamFilter));
    filter.reset(made);
    filter->time_base_in = context->time_base;
    int error = avcodec_parameters_from_context(filter->par_in, context.get());
    if (error >= 0)
        error = av_bsf_init(filter.get());
    if (error < 0)
        fail("prepare its packets", error);
}

ParametersPointer EncoderContext::parameters() const {
    ParametersPointer parameters(avcodec_parameters_alloc());
    if (!parameters)
        throw std::bad_alloc();
    const int error = filter ? avcodec_parameters_copy(parameters.get(), filter->par_out)
                             : avcodec_parameters_from_context(parameters.get(), context.get());
    if (error < 0)
        throw std::bad_alloc();
    parameters->codec_tag = plan.tag;
    parameters->sample_aspect_ratio = plan.aspect;
    parameters->field_order = plan.fields;
    parameters->bits_per_coded_sample = sampleDescriptionDepth(plan);
    parameters->color_primaries = plan.colour.primaries;
    parameters->color_trc = plan.colour.transfer;
    parameters->color_space = plan.colour.matrix;
    parameters->color_range = plan.colour.range;
    return parameters;
}

void EncoderContext::send(AVFrame* frame) {
    // Encoders with a fixed quantiser take it from each picture.
    if (frame)
        frame->quality = context->global_quality;
    const int error = avcodec_send_frame(context.get(), frame);
    if (error < 0)
        fail("encode a frame", error);
}

PacketPointer EncoderContext::receive() {
    PacketPointer packet(av_packet_alloc());
    if (!packet)
        throw std::bad_alloc();
    int error = avcodec_receive_packet(context.get(), packet.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF)
        return nullptr;
    if (error < 0)
        fail("encode a frame", error);
    if (filter) {
        error = av_bsf_send_packet(filter.get(), packet.get());
        if (error >= 0)
            error = av_bsf_receive_packet(filter.get(), packet.get());
        if (error < 0)
            fail("put a packet into its form", error);
    }
    packet->duration = 1;
    if (plan.codec->intraOnly)
        packet->flags |= AV_PKT_FLAG_KEY;
    return packet;
}

void EncoderContext::fail(const char* what, int error) const {
    throw StatusError(statusOfLibraryError(error, Status::CodecFailed),
                      fmt::format("{} could not {}: {}", plan.codec->name, what, libraryReason(error)));
}

}  // namespace Morvane::Worker
