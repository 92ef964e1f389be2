#include "tests/integration/codecs/CodecTrial.h"

#include "worker/encode/VideoEncoder.h"
#include "worker/picture/PictureConverter.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace Morvane::Worker::Trial {

namespace {

void require(bool success, const char* what) {
    if (!success)
        throw std::runtime_error(what);
}

/// How much of red and blue the light of a matrix holds (ITU-T H.273).
std::pair<double, double> lightOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_BT470BG:
            return {0.299, 0.114};
        case AVCOL_SPC_SMPTE240M:
            return {0.212, 0.087};
        case AVCOL_SPC_FCC:
            return {0.30, 0.11};
        case AVCOL_SPC_BT2020_NCL:
            return {0.2627, 0.0593};
        default:
            return {0.2126, 0.0722};
    }
}

/// A sample of a chroma plane at luma position x, y: left-sited and interpolated across, centred and
/// interpolated down.
double chromaAt(const std::vector<int>& plane, const AVFrame& frame, const AVPixFmtDescriptor& format, int x,
                int y, bool centred) {
    const int width = AV_CEIL_RSHIFT(frame.width, format.log2_chroma_w);
    const int height = AV_CEIL_RSHIFT(frame.height, format.log2_chroma_h);
    const double across = 1 << format.log2_chroma_w;
    const double down = 1 << format.log2_chroma_h;
    const double column = std::clamp(centred ? (x + 0.5) / across - 0.5 : x / across, 0.0, width - 1.0);
    const double row = std::clamp((y + 0.5) / down - 0.5, 0.0, height - 1.0);
    const int left = static_cast<int>(column);
    const int top = static_cast<int>(row);
    const auto at = [&](int c, int r) {
        return static_cast<double>(
            plane[static_cast<std::size_t>(std::min(r, height - 1)) * width + std::min(c, width - 1)]);
    };
    return std::lerp(std::lerp(at(left, top), at(left + 1, top), column - left),
                     std::lerp(at(left, top + 1), at(left + 1, top + 1), column - left), row - top);
}

}  // namespace

std::size_t Encoded::bytes() const {
    std::size_t sum = 0;
    for (const auto& packet : packets)
        sum += packet->size;
    return sum;
}

Encoded encode(const EncodingPlan& plan, const std::vector<Pixels>& pictures) {
    Encoded encoded;
    encoded.plan = plan;
    VideoEncoder encoder(plan);
    encoder.start([&](AVPacket& packet) { encoded.packets.emplace_back(av_packet_clone(&packet)); });
    for (const Pixels& pixels : pictures)
        encoder.addFrame(pixels.data());
    encoder.finish();
    encoded.parameters.reset(avcodec_parameters_alloc());
    require(avcodec_parameters_copy(encoded.parameters.get(), &encoder.parameters()) >= 0, "no memory");
    return encoded;
}

std::vector<FramePointer> decode(const Encoded& encoded) {
    const AVCodec* decoder = avcodec_find_decoder(encoded.parameters->codec_id);
    require(decoder, "no decoder");
    CodecPointer context(avcodec_alloc_context3(decoder));
    require(avcodec_parameters_to_context(context.get(), encoded.parameters.get()) >= 0,
            "parameters refused");
    context->thread_count = 1;
    require(avcodec_open2(context.get(), decoder, nullptr) >= 0, "decoder refused");
    std::vector<FramePointer> frames;
    const auto drain = [&] {
        for (FramePointer frame(av_frame_alloc()); avcodec_receive_frame(context.get(), frame.get()) >= 0;
             frame.reset(av_frame_alloc()))
            frames.push_back(std::move(frame));
    };
    for (const auto& packet : encoded.packets) {
        require(avcodec_send_packet(context.get(), packet.get()) >= 0, "packet refused");
        drain();
    }
    avcodec_send_packet(context.get(), nullptr);
    drain();
    return frames;
}

FramePointer converted(const EncodingPlan& plan, const Pixels& pixels) {
    PicturePool pool(plan);
    PictureConverter converter(plan);
    FramePointer frame = pool.take();
    converter.convert(pixels.data(), *frame);
    return frame;
}

void writeMovie(const Encoded& encoded, const std::string& path) {
    AVFormatContext* format = nullptr;
    require(avformat_alloc_output_context2(&format, nullptr, "mov", path.c_str()) >= 0, "no muxer");
    const std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> owner(format, avformat_free_context);
    format->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    AVStream* stream = avformat_new_stream(format, nullptr);
    require(stream && avcodec_parameters_copy(stream->codecpar, encoded.parameters.get()) >= 0, "no memory");
    const AVRational frameTime = av_inv_q(encoded.plan.rate);
    stream->time_base = frameTime;
    stream->avg_frame_rate = encoded.plan.rate;
    stream->sample_aspect_ratio = encoded.parameters->sample_aspect_ratio;
    require(avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, "cannot open the movie");
    require(avformat_write_header(format, nullptr) >= 0, "the muxer refused the track");
    for (const auto& packet : encoded.packets) {
        PacketPointer copy(av_packet_clone(packet.get()));
        copy->stream_index = 0;
        av_packet_rescale_ts(copy.get(), frameTime, stream->time_base);
        require(av_interleaved_write_frame(format, copy.get()) >= 0, "the muxer refused a packet");
    }
    require(av_write_trailer(format) >= 0, "cannot finish the movie");
    avio_closep(&format->pb);
}

/// Pictures with a palette as red, green and blue.
Components paletteComponents(const AVFrame& frame) {
    Components result(3);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            std::uint32_t colour = 0;
            std::memcpy(&colour, frame.data[1] + 4 * frame.data[0][y * frame.linesize[0] + x], sizeof colour);
            for (int c = 0; c < 3; ++c)
                result[c].push_back(static_cast<int>(colour >> (16 - 8 * c) & 0xFF));
        }
    return result;
}

Components components(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    if (description.flags & AV_PIX_FMT_FLAG_PAL)
        return paletteComponents(frame);
    const int count = description.nb_components;
    Components result(count);
    for (int c = 0; c < count; ++c) {
        const bool chroma = (c == 1 || c == 2) && !(description.flags & AV_PIX_FMT_FLAG_RGB);
        const int width = chroma ? AV_CEIL_RSHIFT(frame.width, description.log2_chroma_w) : frame.width;
        const int height = chroma ? AV_CEIL_RSHIFT(frame.height, description.log2_chroma_h) : frame.height;
        std::vector<std::uint16_t> row(width);
        for (int y = 0; y < height; ++y) {
            av_read_image_line(row.data(), const_cast<const std::uint8_t**>(frame.data), frame.linesize,
                               &description, 0, y, c, width, 0);
            result[c].insert(result[c].end(), row.begin(), row.end());
        }
    }
    return result;
}

std::string packedBytes(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    std::string bytes(av_image_get_buffer_size(format, frame.width, frame.height, 1), 0);
    require(
        av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), static_cast<int>(bytes.size()),
                                frame.data, frame.linesize, format, frame.width, frame.height, 1) >= 0,
        "cannot copy the picture");
    return bytes;
}

Pixels rgbOf(const AVFrame& frame, const ColourDecision& colour) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const bool palette = (format.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const bool rgb = palette || (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const Components planes = components(frame);
    const double highest = palette ? 255 : (1 << format.comp[0].depth) - 1;
    const bool full = colour.range == AVCOL_RANGE_JPEG;
    const double unit = (1 << format.comp[0].depth) / 256.0;
    const auto [red, blue] = lightOf(colour.matrix);
    Pixels pixels;
    pixels.reserve(static_cast<std::size_t>(frame.width) * frame.height * 4);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * frame.width + x;
            double r = planes[0][i] / highest;
            double g = 0;
            double b = 0;
            if (rgb) {
                g = planes[1][i] / highest;
                b = planes[2][i] / highest;
            } else {
                const bool centred = frame.chroma_location == AVCHROMA_LOC_CENTER;
                const double middle = 128 * unit;
                const double light =
                    full ? planes[0][i] / highest : (planes[0][i] - 16 * unit) / (219 * unit);
                const double span = full ? highest : 224 * unit;
                const double cb = (chromaAt(planes[1], frame, format, x, y, centred) - middle) / span;
                const double cr = (chromaAt(planes[2], frame, format, x, y, centred) - middle) / span;
                r = light + 2 * (1 - red) * cr;
                b = light + 2 * (1 - blue) * cb;
                g = (light - red * r - blue * b) / (1 - red - blue);
            }
            const double alpha = planes.size() == 4 ? planes[3][i] / highest : 1.0;
            for (const double value : {r, g, b, alpha})
                pixels.push_back(static_cast<float>(value));
        }
    return pixels;
}

double psnr(const Pixels& one, const Pixels& other) {
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (i % 4 == 3)
            continue;
        const double difference = std::clamp(one[i], 0.0F, 1.0F) - std::clamp(other[i], 0.0F, 1.0F);
        sum += difference * difference;
        ++count;
    }
    return sum == 0 ? 100 : std::min(100.0, -10 * std::log10(sum / static_cast<double>(count)));
}

}  // namespace Morvane::Worker::Trial
