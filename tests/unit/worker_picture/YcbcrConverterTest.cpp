// Pictures of YCbCr beside those that zimg makes of the same floats with the same kind of filter.

#include <gtest/gtest.h>
#include <zimg.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "worker/picture/PictureConverter.h"
#include "worker/picture/PicturePool.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Morvane::Worker {
namespace {

struct Trial {
    const char* type;
    const char* settings;
    int width, height;
};

EncodingPlan planOf(const Trial& trial) {
    EncodingRequest request;
    request.settings = Settings::parse(trial.settings, *findCodec(trial.type));
    request.width = trial.width;
    request.height = trial.height;
    request.quality = 4;
    return planEncoding(request);
}

/// Planes of samples, 16 bits wide whatever their depth, without padding.
using Planes = std::vector<std::vector<std::uint16_t>>;

/// Rows that start and end where zimg wants them.
class AlignedRows {
public:
    AlignedRows(std::size_t bytesOfRow, std::size_t rows)
        : stride((bytesOfRow + 127) / 64 * 64), memory(std::aligned_alloc(64, stride * rows), std::free) {}

    template <typename Value>
    Value* row(std::size_t y) {
        return reinterpret_cast<Value*>(static_cast<std::uint8_t*>(memory.get()) + y * stride);
    }

    const std::size_t stride;

private:
    std::unique_ptr<void, void (*)(void*)> memory;
};

Planes byZimg(const EncodingPlan& plan, const std::vector<float>& pixels) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(plan.picture->format);
    zimg_image_format from, to;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = static_cast<unsigned>(plan.width);
    from.height = static_cast<unsigned>(plan.height);
    from.pixel_type = ZIMG_PIXEL_FLOAT;
    from.color_family = ZIMG_COLOR_RGB;
    from.matrix_coefficients = ZIMG_MATRIX_RGB;
    from.pixel_range = ZIMG_RANGE_FULL;
    to = from;
    to.pixel_type = ZIMG_PIXEL_WORD;
    to.depth = static_cast<unsigned>(format.comp[0].depth);
    to.subsample_w = format.log2_chroma_w;
    to.subsample_h = format.log2_chroma_h;
    to.color_family = ZIMG_COLOR_YUV;
    to.matrix_coefficients = static_cast<zimg_matrix_coefficients_e>(plan.colour.matrix);
    to.pixel_range = plan.colour.range == AVCOL_RANGE_JPEG ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    to.chroma_location = plan.codec->colour == ColourModel::Jpeg ? ZIMG_CHROMA_CENTER : ZIMG_CHROMA_LEFT;
    zimg_graph_builder_params options;
    zimg_graph_builder_params_default(&options, ZIMG_API_VERSION);
    options.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    options.filter_param_a_uv = 0;
    options.filter_param_b_uv = 0.5;
    const std::unique_ptr<zimg_filter_graph, void (*)(zimg_filter_graph*)> graph(
        zimg_filter_graph_build(&from, &to, &options), zimg_filter_graph_free);
    EXPECT_TRUE(graph);

    const auto width = static_cast<std::size_t>(plan.width);
    const auto height = static_cast<std::size_t>(plan.height);
    std::vector<AlignedRows> input, output;
    zimg_image_buffer_const source{ZIMG_API_VERSION, {}};
    zimg_image_buffer target{ZIMG_API_VERSION, {}};
    for (std::size_t plane = 0; plane < 3; ++plane) {
        input.emplace_back(width * sizeof(float), height);
        output.emplace_back(width * sizeof(std::uint16_t), height);
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                input[plane].row<float>(y)[x] = pixels[4 * (y * width + x) + plane];
    }
    for (std::size_t plane = 0; plane < 3; ++plane) {
        source.plane[plane] = {input[plane].row<void>(0), static_cast<std::ptrdiff_t>(input[plane].stride),
                               ZIMG_BUFFER_MAX};
        target.plane[plane] = {output[plane].row<void>(0), static_cast<std::ptrdiff_t>(output[plane].stride),
                               ZIMG_BUFFER_MAX};
    }
    std::size_t bytes = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &bytes);
    const std::unique_ptr<void, void (*)(void*)> memory(std::aligned_alloc(64, (bytes + 63) / 64 * 64),
                                                        std::free);
    EXPECT_EQ(zimg_filter_graph_process(graph.get(), &source, &target, memory.get(), nullptr, nullptr,
                                        nullptr, nullptr),
              ZIMG_ERROR_SUCCESS);
    Planes planes(3);
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const std::size_t columns = width >> (plane == 0 ? 0 : format.log2_chroma_w);
        for (std::size_t y = 0; y < height >> (plane == 0 ? 0 : format.log2_chroma_h); ++y) {
            const auto* row = output[plane].row<std::uint16_t>(y);
            planes[plane].insert(planes[plane].end(), row, row + columns);
        }
    }
    return planes;
}

class YcbcrBesideZimg : public testing::TestWithParam<Trial> {};

TEST_P(YcbcrBesideZimg, IsTheSameButForTheEdges) {
    const EncodingPlan plan = planOf(GetParam());
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(plan.picture->format);
    std::mt19937 random(11);
    std::uniform_real_distribution<float> nominal(0.2F, 0.8F);
    std::vector<float> pixels(static_cast<std::size_t>(plan.width) * static_cast<std::size_t>(plan.height) *
                              4);
    std::generate(pixels.begin(), pixels.end(), [&] { return nominal(random); });
    PicturePool pool(plan);
    const FramePointer frame = pool.take();

    PictureConverter(plan).convert(pixels.data(), *frame);

    const Planes expected = byZimg(plan, pixels);
    for (int plane = 0; plane < 3; ++plane) {
        const bool chroma = plane > 0;
        const int columns = plan.width >> (chroma ? format.log2_chroma_w : 0);
        const int rows = plan.height >> (chroma ? format.log2_chroma_h : 0);
        const int edge = chroma ? 4 : 0;  // samples; zimg mirrors the picture there
        std::vector<std::uint16_t> row(static_cast<std::size_t>(columns));
        int different = 0;
        for (int y = edge; y < rows - edge; ++y) {
            av_read_image_line(row.data(), const_cast<const std::uint8_t**>(frame->data), frame->linesize,
                               &format, 0, y, plane, columns, 0);
            for (int x = edge; x < columns - edge; ++x) {
                const int wanted =
                    expected[static_cast<std::size_t>(plane)][static_cast<std::size_t>(y * columns + x)];
                const int is = row[static_cast<std::size_t>(x)];
                different += is != wanted;
                ASSERT_NEAR(is, wanted, 1) << "plane " << plane << " at " << x << ", " << y;
            }
        }
        // Rounded another way now and then, where floats are added up in another order.
        EXPECT_LE(different, columns * rows / 50) << "plane " << plane;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryLayout, YcbcrBesideZimg,
                         testing::Values(Trial{"apch", "", 128, 96}, Trial{"ap4h", "", 128, 96},
                                         Trial{"mjpa", "", 128, 96}, Trial{"2vuy", "", 128, 96},
                                         Trial{"v210", "", 132, 96}, Trial{"avc1", "", 128, 96},
                                         Trial{"avc1", "range=pc", 128, 96},
                                         Trial{"hvc1", "bitdepth=12", 128, 96}, Trial{"SVQ1", "", 128, 96},
                                         Trial{"dvc ", "", 720, 480},
                                         Trial{"v410", "colour=bt2020", 128, 96}));

}  // namespace
}  // namespace Morvane::Worker
