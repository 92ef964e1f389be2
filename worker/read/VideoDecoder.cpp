#include "worker/read/VideoDecoder.h"

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavutil/imgutils.h>
}

#include <cerrno>
#include <cstddef>
#include <optional>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

/// Rows and planes as libav lays them out itself.
struct PictureLayout {
    int linesizes[4] = {};
    std::size_t planeBytes[4] = {};
};

std::optional<PictureLayout> layoutFor(AVCodecContext* decoder, const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    int width = picture.width;
    int height = picture.height;
    int alignment[AV_NUM_DATA_POINTERS];
    avcodec_align_dimensions2(decoder, &width, &height, alignment);
    PictureLayout layout;
    const auto isAligned = [&] {
        for (int plane = 0; plane < 4; ++plane)
            if (layout.linesizes[plane] % alignment[plane] != 0)
                return false;
        return true;
    };
    // Planes of different widths are aligned alike only when the whole picture is wide enough.
    do {
        if (av_image_fill_linesizes(layout.linesizes, format, width) < 0)
            return std::nullopt;
        width += width & ~(width - 1);
    } while (!isAligned());
    const std::ptrdiff_t strides[4] = {layout.linesizes[0], layout.linesizes[1], layout.linesizes[2],
                                       layout.linesizes[3]};
    if (av_image_fill_plane_sizes(layout.planeBytes, format, height, strides) < 0)
        return std::nullopt;
    return layout;
}

int givePicture(AVCodecContext* decoder, AVFrame* picture, int flags) {
    const bool ownMemory =
        (decoder->codec->capabilities & AV_CODEC_CAP_DR1) != 0 && decoder->hw_frames_ctx == nullptr;
    const auto layout = ownMemory ? layoutFor(decoder, *picture) : std::nullopt;
    if (!layout)
        return avcodec_default_get_buffer2(decoder, picture, flags);
    constexpr std::size_t alignment = 64;  // bytes
    constexpr std::size_t slack = 128;     // bytes behind a plane that decoders may touch
    std::size_t offsets[4] = {};
    std::size_t bytes = 0;
    for (int plane = 0; plane < 4; ++plane) {
        offsets[plane] = bytes;
        if (layout->planeBytes[plane] != 0)
            bytes += (layout->planeBytes[plane] + slack + alignment - 1) / alignment * alignment;
    }
    picture->buf[0] = static_cast<BufferPool*>(decoder->opaque)->take(bytes);
    if (picture->buf[0] == nullptr)
        return AVERROR(ENOMEM);
    for (int plane = 0; plane < 4 && layout->planeBytes[plane] != 0; ++plane) {
        picture->data[plane] = picture->buf[0]->data + offsets[plane];
        picture->linesize[plane] = layout->linesizes[plane];
    }
    picture->extended_data = picture->data;
    return 0;
}

/// Later versions of the library take it for granted.
void allowCallsFromThreads([[maybe_unused]] AVCodecContext& decoder) {
#if FF_API_THREAD_SAFE_CALLBACKS
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    decoder.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
}

}  // namespace

CodecPointer openDecoder(const AVStream& stream, const std::string& path, BufferPool& memory) {
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr)
        throw StatusError(Status::CodecFailed, "cannot decode " + path + ": there is no decoder for " +
                                                   avcodec_get_name(stream.codecpar->codec_id));
    CodecPointer decoder(requireMemory(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(decoder.get(), stream.codecpar);
    decoder->thread_count = 0;  // as many as there are cores
    decoder->pkt_timebase = stream.time_base;
    decoder->opaque = &memory;
    decoder->get_buffer2 = givePicture;
    allowCallsFromThreads(*decoder);
    if (result >= 0)
        result = avcodec_open2(decoder.get(), codec, nullptr);
    if (result < 0)
        throw StatusError(statusOfLibraryError(result, Status::CodecFailed),
                          "cannot decode " + path + ": " + libraryReason(result));
    return decoder;
}

bool isIntraOnly(AVCodecID codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
}

}  // namespace Morvane::Worker
