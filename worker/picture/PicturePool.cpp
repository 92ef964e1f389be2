#include "worker/picture/PicturePool.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <new>

namespace Morvane::Worker {

namespace {

constexpr int alignment = 64;          // bytes
constexpr int paletteBytes = 256 * 4;  // the second plane of palette pictures
/// Encoders may read a vector past the last sample, and those of interlaced pictures whole macroblocks of
/// each field past the last row; libav's own pictures have room for it.
constexpr std::size_t slack = 64;
constexpr int rowsOfSlack = 32;

int alignedUp(int bytes) {
    return (bytes + alignment - 1) / alignment * alignment;
}

}  // namespace

PicturePool::PicturePool(const EncodingPlan& encodingPlan) : plan(encodingPlan) {
    const AVPixelFormat format = plan.picture->format;
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    const int width = AV_CEIL_RSHIFT(plan.width, description.log2_chroma_w) << description.log2_chroma_w;
    const int height = AV_CEIL_RSHIFT(plan.height, description.log2_chroma_h) << description.log2_chroma_h;
    if (av_image_fill_linesizes(linesizes, format, width) < 0)
        throw std::bad_alloc();
    for (int plane = 0; plane < 4 && linesizes[plane] > 0; ++plane) {
        const bool chroma = plane == 1 || plane == 2;
        linesizes[plane] = alignedUp(linesizes[plane]);
        offsets[plane] = bytes;
        bytes += static_cast<std::size_t>(linesizes[plane]) *
                 ((chroma ? height >> description.log2_chroma_h : height) + rowsOfSlack);
    }
    if (description.flags & AV_PIX_FMT_FLAG_PAL) {
        offsets[1] = bytes;
        linesizes[1] = 4;
        bytes += paletteBytes;
    }
    bytes += slack;
}

FramePointer PicturePool::take() {
    FramePointer frame(av_frame_alloc());
    if (!frame || !(frame->buf[0] = pool.take(bytes)))
        throw std::bad_alloc();
    for (int plane = 0; plane < 4 && linesizes[plane] > 0; ++plane) {
        frame->data[plane] = frame->buf[0]->data + offsets[plane];
        frame->linesize[plane] = linesizes[plane];
    }
    frame->format = plan.picture->format;
    frame->width = plan.width;
    frame->height = plan.height;
    frame->color_primaries = plan.colour.primaries;
    frame->color_trc = plan.colour.transfer;
    frame->colorspace = plan.colour.matrix;
    frame->color_range = plan.colour.range;
    frame->sample_aspect_ratio = plan.aspect;
    frame->interlaced_frame = plan.fields != AV_FIELD_PROGRESSIVE;
    frame->top_field_first = plan.fields == AV_FIELD_TB;
    return frame;
}

}  // namespace Morvane::Worker
