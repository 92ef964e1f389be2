#include "worker/read/FloatConverter.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

#include <gtest/gtest.h>
#include <zimg.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "worker/LibavPointers.h"
#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

FramePointer blankFrame(AVPixelFormat format, int width, int height) {
    FramePointer frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    frame->colorspace = AVCOL_SPC_BT709;
    frame->color_range = AVCOL_RANGE_MPEG;
    frame->chroma_location = AVCHROMA_LOC_LEFT;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    // libav's writing of lines adds bits to what is there.
    for (const AVBufferRef* buffer : frame->buf)
        if (buffer != nullptr)
            std::fill_n(buffer->data, buffer->size, std::uint8_t{0});
    return frame;
}

/// Every sample of every plane at random, the forbidden ones too.
FramePointer noise(AVPixelFormat format, int width, int height) {
    FramePointer frame = blankFrame(format, width, height);
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
    std::mt19937 random(7);
    for (int component = 0; component < layout.nb_components; ++component) {
        const bool subsampled = component == 1 || component == 2;
        const int columns = AV_CEIL_RSHIFT(width, subsampled ? layout.log2_chroma_w : 0);
        const int rows = AV_CEIL_RSHIFT(height, subsampled ? layout.log2_chroma_h : 0);
        std::uniform_int_distribution<unsigned> samples(0, (1U << layout.comp[component].depth) - 1);
        std::vector<std::uint16_t> row(static_cast<std::size_t>(columns));
        for (int y = 0; y < rows; ++y) {
            for (std::uint16_t& sample : row)
                sample = static_cast<std::uint16_t>(samples(random));
            av_write_image_line(row.data(), frame->data, frame->linesize, &layout, 0, y, component, columns);
        }
    }
    return frame;
}

std::vector<float> converted(const AVFrame& frame, const Orientation& orientation = {}) {
    std::vector<float> rgba(
        static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4, -7.0F);
    FloatConverter(2).convert(frame, orientation, rgba);
    return rgba;
}

/// The same picture by another library, for planar frames without alpha; `field` -1 for all rows at once.
std::vector<float> byZimg(const AVFrame& frame, int field) {
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const int fields = field < 0 ? 1 : 2;
    zimg_image_format from, to;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = static_cast<unsigned>(frame.width);
    from.height = static_cast<unsigned>(frame.height / fields);
    from.field_parity = field < 0 ? ZIMG_FIELD_PROGRESSIVE : field == 0 ? ZIMG_FIELD_TOP : ZIMG_FIELD_BOTTOM;
    to = from;
    from.depth = static_cast<unsigned>(layout.comp[0].depth);
    from.pixel_type = from.depth > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    from.subsample_w = layout.log2_chroma_w;
    from.subsample_h = layout.log2_chroma_h;
    from.color_family = ZIMG_COLOR_YUV;
    from.matrix_coefficients = static_cast<zimg_matrix_coefficients_e>(frame.colorspace);
    from.pixel_range = frame.color_range == AVCOL_RANGE_JPEG ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    from.chroma_location = static_cast<zimg_chroma_location_e>(frame.chroma_location - 1);
    to.pixel_type = ZIMG_PIXEL_FLOAT;
    to.color_family = ZIMG_COLOR_RGB;
    to.matrix_coefficients = ZIMG_MATRIX_RGB;
    zimg_graph_builder_params options;
    zimg_graph_builder_params_default(&options, ZIMG_API_VERSION);
    options.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    const std::unique_ptr<zimg_filter_graph, void (*)(zimg_filter_graph*)> graph(
        zimg_filter_graph_build(&from, &to, &options), zimg_filter_graph_free);
    if (graph == nullptr) {
        char reason[256] = "";
        zimg_get_last_error(reason, sizeof reason);
        throw std::runtime_error(reason);
    }
    // zimg wants its rows aligned, and may read and write to the end of a vector.
    const FramePointer input(av_frame_clone(&frame));
    const FramePointer output = blankFrame(AV_PIX_FMT_GBRPF32LE, frame.width, frame.height / fields);
    zimg_image_buffer_const source{ZIMG_API_VERSION, {}};
    zimg_image_buffer target{ZIMG_API_VERSION, {}};
    for (int plane = 0; plane < 3; ++plane) {
        const std::ptrdiff_t stride = input->linesize[plane];
        source.plane[plane] = {input->data[plane] + std::max(field, 0) * stride, stride * fields,
                               ZIMG_BUFFER_MAX};
        // libav's order of planes is G, B, R.
        const int place = (plane + 2) % 3;
        target.plane[plane] = {output->data[place], output->linesize[place], ZIMG_BUFFER_MAX};
    }
    std::size_t bytes = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &bytes);
    const std::unique_ptr<void, void (*)(void*)> memory(std::aligned_alloc(64, (bytes + 64) / 64 * 64),
                                                        std::free);
    EXPECT_EQ(zimg_filter_graph_process(graph.get(), &source, &target, memory.get(), nullptr, nullptr,
                                        nullptr, nullptr),
              ZIMG_ERROR_SUCCESS);
    std::vector<float> rgb;
    for (int y = 0; y < output->height; ++y)
        for (int x = 0; x < output->width; ++x)
            for (const int plane : {2, 0, 1})
                rgb.push_back(
                    reinterpret_cast<const float*>(output->data[plane] + y * output->linesize[plane])[x]);
    return rgb;
}

/// The largest difference of red, green and blue between our rows first, first + step … and all of the
/// other's.
float worstDifference(const std::vector<float>& rgba, const std::vector<float>& rgb, int width, int first,
                      int step) {
    float worst = 0;
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        const std::size_t pixel = i / 3;
        const auto columns = static_cast<std::size_t>(width);
        const std::size_t y =
            pixel / columns * static_cast<std::size_t>(step) + static_cast<std::size_t>(first);
        const float difference = std::abs(rgba[(y * columns + pixel % columns) * 4 + i % 3] - rgb[i]);
        worst = std::isnan(difference) ? HUGE_VALF : std::max(worst, difference);
    }
    return worst;
}

// Both compute with floats, in other orders.
constexpr float tolerance = 4e-6F;

class EveryYcbcrFormat : public testing::TestWithParam<AVPixelFormat> {};

TEST_P(EveryYcbcrFormat, IsConvertedAsAnotherLibraryDoes) {
    for (const auto& [width, height] : {std::pair{64, 32}, {70, 22}, {2, 2}, {4, 40}})
        for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG})
            for (int location = AVCHROMA_LOC_LEFT; location <= AVCHROMA_LOC_BOTTOM; ++location) {
                const FramePointer frame = noise(GetParam(), width, height);
                frame->color_range = range;
                frame->chroma_location = static_cast<AVChromaLocation>(location);
                const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(GetParam());
                if (width % (1 << layout.log2_chroma_w) != 0 || height % (1 << layout.log2_chroma_h) != 0)
                    continue;

                const std::vector<float> rgba = converted(*frame);

                EXPECT_LT(worstDifference(rgba, byZimg(*frame, -1), width, 0, 1), tolerance)
                    << width << "x" << height << " range " << range << " location " << location;
            }
}

std::string formatName(const testing::TestParamInfo<AVPixelFormat>& format) {
    return av_get_pix_fmt_name(format.param);
}

INSTANTIATE_TEST_SUITE_P(Planar, EveryYcbcrFormat,
                         testing::Values(AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P,
                                         AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUV410P,
                                         AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV422P10LE,
                                         AV_PIX_FMT_YUV444P10LE, AV_PIX_FMT_YUV422P12LE,
                                         AV_PIX_FMT_YUV444P16LE),
                         formatName);

class InterlacedFormat : public testing::TestWithParam<AVPixelFormat> {};

TEST_P(InterlacedFormat, HasItsFieldsConvertedEachByItself) {
    for (int location = AVCHROMA_LOC_LEFT; location <= AVCHROMA_LOC_BOTTOM; ++location) {
        const FramePointer frame = noise(GetParam(), 48, 32);
        frame->chroma_location = static_cast<AVChromaLocation>(location);
        frame->interlaced_frame = 1;

        const std::vector<float> rgba = converted(*frame);

        for (const int field : {0, 1})
            EXPECT_LT(worstDifference(rgba, byZimg(*frame, field), frame->width, field, 2), tolerance)
                << "location " << location << " field " << field;
    }
}

INSTANTIATE_TEST_SUITE_P(Planar, InterlacedFormat,
                         testing::Values(AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUV420P10LE,
                                         AV_PIX_FMT_YUV422P10LE),
                         formatName);

TEST(FloatConverter, AppliesEveryMatrixAsAnotherLibraryDoes) {
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_FCC, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M,
                                      AVCOL_SPC_SMPTE240M, AVCOL_SPC_YCGCO, AVCOL_SPC_BT2020_NCL}) {
        const FramePointer frame = noise(AV_PIX_FMT_YUV444P10LE, 32, 4);
        frame->colorspace = matrix;

        EXPECT_LT(worstDifference(converted(*frame), byZimg(*frame, -1), 32, 0, 1), tolerance)
            << av_color_space_name(matrix);
    }
}

TEST(FloatConverter, RefusesWhatNeedsMoreThanAMatrix) {
    const FramePointer frame = noise(AV_PIX_FMT_YUV444P, 8, 8);
    frame->colorspace = AVCOL_SPC_ICTCP;

    try {
        converted(*frame);
        FAIL() << "converted";
    } catch (const StatusError& error) {
        EXPECT_STREQ(error.what(), "pictures of colour matrix ictcp cannot be converted");
    }
}

/// Samples in other orders and places hold the same picture.
TEST(FloatConverter, ReadsPackedHalfPackedAndSwappedSamplesAsPlanarOnes) {
    for (const auto& [planar, other] : {std::pair{AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12},
                                        {AV_PIX_FMT_YUV422P, AV_PIX_FMT_UYVY422},
                                        {AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV422P10BE},
                                        {AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_P010LE}})
        for (const int height : {6, 32, 35}) {
            const FramePointer plain = noise(planar, 46, height);
            const FramePointer packed = noise(other, 46, height);

            EXPECT_EQ(converted(*plain), converted(*packed)) << av_get_pix_fmt_name(other) << " " << height;
        }
}

TEST(FloatConverter, TakesAlphaAtFullRangeFromEveryKindOfPicture) {
    const FramePointer frame = blankFrame(AV_PIX_FMT_YUVA444P10LE, 33, 2);
    for (int plane = 0; plane < 4; ++plane)
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 33; ++x)
                reinterpret_cast<std::uint16_t*>(frame->data[plane] + y * frame->linesize[plane])[x] =
                    static_cast<std::uint16_t>(plane == 0   ? 940
                                               : plane == 3 ? (x == 0 ? 0 : 1023)
                                                            : 512);

    const std::vector<float> rgba = converted(*frame);

    const std::vector<float> white(4, 1.0F);
    EXPECT_EQ(std::vector<float>(rgba.begin(), rgba.begin() + 4), (std::vector<float>{1, 1, 1, 0}));
    EXPECT_EQ(std::vector<float>(rgba.end() - 4, rgba.end()), white);
}

TEST(FloatConverter, ConvertsOddSizesToTheLastRowAndColumn) {
    for (const int width : {1, 3, 17, 33})
        for (const int height : {1, 5, 17}) {
            const FramePointer frame = blankFrame(AV_PIX_FMT_YUV420P, width, height);
            for (int plane = 0; plane < 3; ++plane)
                for (int y = 0; y < AV_CEIL_RSHIFT(height, plane == 0 ? 0 : 1); ++y)
                    std::fill_n(frame->data[plane] + y * frame->linesize[plane],
                                AV_CEIL_RSHIFT(width, plane == 0 ? 0 : 1), plane == 0 ? 126 : 128);

            for (const float value : converted(*frame))
                EXPECT_TRUE(value == 1.0F || std::abs(value - 110.0F / 219) < 1e-6F) << value;
        }
}

TEST(FloatConverter, TurnsAPictureAsTheMovieSays) {
    const FramePointer frame = noise(AV_PIX_FMT_YUV422P, 20, 34);
    const std::vector<float> straight = converted(*frame);

    const std::vector<float> turned = converted(*frame, {true, true, false});

    // A quarter turn: the last row becomes the first column.
    for (std::size_t y = 0; y < 34; ++y)
        for (std::size_t x = 0; x < 20; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
                ASSERT_EQ(turned[(x * 34 + (33 - y)) * 4 + channel], straight[(y * 20 + x) * 4 + channel]);
}

TEST(FloatConverter, WhiteAndBlackAreExactAtEveryDepth) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P10LE, AV_PIX_FMT_YUV444P12LE, AV_PIX_FMT_YUV444P16LE})
        for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
            const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
            const unsigned unit = 1U << (layout.comp[0].depth - 8);
            const unsigned black = range == AVCOL_RANGE_MPEG ? 16 * unit : 0;
            const unsigned white = range == AVCOL_RANGE_MPEG ? 235 * unit : 256 * unit - 1;
            const FramePointer frame = blankFrame(format, 2, 1);
            frame->color_range = range;
            const std::vector<std::uint16_t> luma{static_cast<std::uint16_t>(black),
                                                  static_cast<std::uint16_t>(white)};
            const std::vector<std::uint16_t> chroma(2, static_cast<std::uint16_t>(128 * unit));
            for (int component = 0; component < 3; ++component)
                av_write_image_line((component == 0 ? luma : chroma).data(), frame->data, frame->linesize,
                                    &layout, 0, 0, component, 2);

            EXPECT_EQ(converted(*frame), (std::vector<float>{0, 0, 0, 1, 1, 1, 1, 1}))
                << layout.name << " range " << range;
        }
}

}  // namespace
}  // namespace Morvane::Worker
