#include "worker/Status.h"
#include "worker/picture/RowKernels.h"
#include "worker/picture/StripConverter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <fmt/format.h>
#include <zimg.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <new>

namespace Morvane::Worker {

namespace {

constexpr std::size_t alignment = 64;  // bytes; what zimg wants of every row
/// Rows of a strip where strips are independent: some hundred kilobytes of samples.
constexpr int rowsOfAStrip = 64;

struct FreeGraph {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};
using Graph = std::unique_ptr<zimg_filter_graph, FreeGraph>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using AlignedMemory = std::unique_ptr<std::uint8_t, FreeMemory>;

std::size_t alignedUp(std::size_t bytes) {
    return (bytes + alignment - 1) / alignment * alignment;
}

AlignedMemory allocate(std::size_t bytes) {
    AlignedMemory memory(
        static_cast<std::uint8_t*>(std::aligned_alloc(alignment, alignedUp(std::max(bytes, alignment)))));
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

[[noreturn]] void failWithLastError() {
    char reason[256] = "";
    zimg_get_last_error(reason, sizeof reason);
    throw StatusError(Status::CodecFailed, fmt::format("cannot convert the picture: {}", reason));
}

/// What one thread needs: a ring of float rows that zimg reads, a ring of rows that it writes where the
/// target is packed, and zimg's own working memory.
struct Buffers {
    AlignedMemory input;
    AlignedMemory output;
    AlignedMemory work;
    std::vector<float> scratch;
};

/// The conversion of strips of one height, and the rings it needs.
struct StripGraph {
    Graph graph;
    unsigned inputMask = 0;
    unsigned inputRows = 0;
    unsigned outputMask = 0;
    unsigned outputRows = 0;
    std::size_t workSize = 0;  // bytes
};

int roundedUp(int size, int shift) {
    return (size + (1 << shift) - 1) >> shift << shift;
}

/// Video range has room for what is a little blacker than black and whiter than white: to the codes 4 and
/// 1019 of 10 bits, which stand for these values. Full range has none.
RowKernels::Limits rgbLimits(const EncodingPlan& plan) {
    if (plan.colour.range == AVCOL_RANGE_JPEG)
        return {0.0F, 1.0F};
    return {(4.0F - 64.0F) / 876.0F, (1019.0F - 64.0F) / 876.0F};
}

/// JPEG's chroma lies between the luma samples; elsewhere it is on the left ones, as in MPEG-2.
zimg_chroma_location_e chromaLocation(const EncodingPlan& plan) {
    return plan.codec->colour == ColourModel::Jpeg ? ZIMG_CHROMA_CENTER : ZIMG_CHROMA_LEFT;
}

class YcbcrConverter : public StripConverter {
public:
    YcbcrConverter(const EncodingPlan& encodingPlan, int members);

    int stripRows() const override { return rowsEachStrip; }
    void convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) override;

private:
    /// One strip while it is being converted, for zimg's callbacks.
    struct Strip {
        const YcbcrConverter& converter;
        const StripGraph& graph;
        const RowSource& rows;
        Buffers& buffers;
        AVFrame& target;
        int firstRow;
        int step;  // 2 within a field
    };

    bool isPacked() const { return plan.picture->format == AV_PIX_FMT_UYVY422; }
    Graph makeGraph(int rowCount, zimg_field_parity_e parity) const;
    void prepareGraph(int rowCount, zimg_field_parity_e parity);
    void allocateBuffers();
    void run(Strip& strip) const;
    zimg_image_buffer_const inputOf(const Strip& strip) const;
    zimg_image_buffer outputOf(const Strip& strip) const;
    std::uint8_t* outputRow(const Strip& strip, unsigned plane, unsigned i) const;
    void unpackRow(const Strip& strip, unsigned i, int left, int right) const;
    void storeAlpha(const Strip& strip, const float* pixels, int y, int left, int count) const;
    void packRow(const Strip& strip, unsigned i, unsigned left, unsigned right) const;

    const EncodingPlan& plan;
    const AVPixFmtDescriptor& format;
    const int paddedWidth;           // whole chroma samples
    const int paddedHeight;          // likewise
    const bool byFields;             // chroma of interlaced pictures is made within each field
    const std::size_t inputStride;   // bytes
    const std::size_t outputStride;  // bytes
    int rowsEachStrip = 0;
    std::map<std::pair<int, zimg_field_parity_e>, StripGraph> graphs;
    std::vector<Buffers> buffersOfMember;
};

YcbcrConverter::YcbcrConverter(const EncodingPlan& encodingPlan, int members)
    : plan(encodingPlan),
      format(*av_pix_fmt_desc_get(plan.picture->format)),
      paddedWidth(roundedUp(plan.width, format.log2_chroma_w)),
      paddedHeight(roundedUp(plan.height, format.log2_chroma_h)),
      byFields(plan.fields != AV_FIELD_PROGRESSIVE && format.log2_chroma_h > 0 && plan.height % 4 == 0),
      inputStride(alignedUp(paddedWidth * sizeof(float))),
      outputStride(alignedUp(paddedWidth)),
      buffersOfMember(members) {
    // Vertical chroma filters read over the edges of a strip, so such pictures are one strip.
    const bool oneStrip = format.log2_chroma_h > 0;
    rowsEachStrip = oneStrip ? plan.height : std::min(rowsOfAStrip, plan.height);
    if (byFields) {
        prepareGraph(plan.height / 2, ZIMG_FIELD_TOP);
        prepareGraph(plan.height / 2, ZIMG_FIELD_BOTTOM);
    } else {
        prepareGraph(oneStrip ? paddedHeight : rowsEachStrip, ZIMG_FIELD_PROGRESSIVE);
        if (plan.height % rowsEachStrip != 0)
            prepareGraph(plan.height % rowsEachStrip, ZIMG_FIELD_PROGRESSIVE);
    }
    allocateBuffers();
}

Graph YcbcrConverter::makeGraph(int rowCount, zimg_field_parity_e parity) const {
    zimg_image_format from;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = paddedWidth;
    from.height = rowCount;
    from.pixel_type = ZIMG_PIXEL_FLOAT;
    from.color_family = ZIMG_COLOR_RGB;
    from.matrix_coefficients = ZIMG_MATRIX_RGB;
    from.pixel_range = ZIMG_RANGE_FULL;
    from.field_parity = parity;
    zimg_image_format to = from;
    to.pixel_type = format.comp[0].depth > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    to.depth = format.comp[0].depth;
    to.subsample_w = format.log2_chroma_w;
    to.subsample_h = format.log2_chroma_h;
    to.color_family = ZIMG_COLOR_YUV;
    to.matrix_coefficients = static_cast<zimg_matrix_coefficients_e>(plan.colour.matrix);
    to.pixel_range = plan.colour.range == AVCOL_RANGE_JPEG ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    to.chroma_location = chromaLocation(plan);
    Graph graph(zimg_filter_graph_build(&from, &to, nullptr));
    if (!graph)
        failWithLastError();
    return graph;
}

void YcbcrConverter::prepareGraph(int rowCount, zimg_field_parity_e parity) {
    StripGraph strip;
    strip.graph = makeGraph(rowCount, parity);
    unsigned inputRows = 0;
    unsigned outputRows = 0;
    if (zimg_filter_graph_get_input_buffering(strip.graph.get(), &inputRows) != ZIMG_ERROR_SUCCESS ||
        zimg_filter_graph_get_output_buffering(strip.graph.get(), &outputRows) != ZIMG_ERROR_SUCCESS ||
        zimg_filter_graph_get_tmp_size(strip.graph.get(), &strip.workSize) != ZIMG_ERROR_SUCCESS)
        failWithLastError();
    // A mask of all bits stands for the whole strip.
    strip.inputMask = zimg_select_buffer_mask(inputRows);
    strip.inputRows = strip.inputMask == ZIMG_BUFFER_MAX ? rowCount : strip.inputMask + 1;
    strip.outputMask = zimg_select_buffer_mask(outputRows);
    strip.outputRows = strip.outputMask == ZIMG_BUFFER_MAX ? rowCount : strip.outputMask + 1;
    graphs.insert_or_assign(std::pair(rowCount, parity), std::move(strip));
}

void YcbcrConverter::allocateBuffers() {
    std::size_t inputSize = 0;
    std::size_t outputSize = 0;
    std::size_t workSize = 0;
    for (const auto& [key, graph] : graphs) {
        inputSize = std::max(inputSize, 3 * graph.inputRows * inputStride);
        outputSize = std::max(outputSize, isPacked() ? 3 * graph.outputRows * outputStride : 0);
        workSize = std::max(workSize, graph.workSize);
    }
    for (Buffers& buffers : buffersOfMember)
        buffers = {allocate(inputSize), allocate(outputSize), allocate(workSize), {}};
}

void YcbcrConverter::convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) {
    Buffers& buffers = buffersOfMember[member];
    const auto convertPart = [&](int height, zimg_field_parity_e parity, int first, int step) {
        Strip strip = {*this, graphs.at({height, parity}), rows, buffers, target, first, step};
        run(strip);
    };
    if (byFields) {
        convertPart(plan.height / 2, ZIMG_FIELD_TOP, 0, 2);
        convertPart(plan.height / 2, ZIMG_FIELD_BOTTOM, 1, 2);
    } else {
        convertPart(format.log2_chroma_h > 0 ? paddedHeight : rowCount, ZIMG_FIELD_PROGRESSIVE, firstRow, 1);
    }
}

void YcbcrConverter::run(Strip& strip) const {
    const zimg_image_buffer_const input = inputOf(strip);
    const zimg_image_buffer output = outputOf(strip);
    const auto unpack = [](void* user, unsigned i, unsigned left, unsigned right) {
        const auto& one = *static_cast<const Strip*>(user);
        one.converter.unpackRow(one, i, static_cast<int>(left), static_cast<int>(right));
        return 0;
    };
    const auto pack = [](void* user, unsigned i, unsigned left, unsigned right) {
        const auto& one = *static_cast<const Strip*>(user);
        one.converter.packRow(one, i, left, right);
        return 0;
    };
    // The callbacks do not fail, and then nothing else in the graph can.
    zimg_filter_graph_process(strip.graph.graph.get(), &input, &output, strip.buffers.work.get(), unpack,
                              &strip, isPacked() ? +pack : nullptr, &strip);
}

zimg_image_buffer_const YcbcrConverter::inputOf(const Strip& strip) const {
    zimg_image_buffer_const input = {};
    input.version = ZIMG_API_VERSION;
    for (unsigned plane = 0; plane < 3; ++plane)
        input.plane[plane] = {strip.buffers.input.get() + plane * strip.graph.inputRows * inputStride,
                              static_cast<std::ptrdiff_t>(inputStride), strip.graph.inputMask};
    return input;
}

zimg_image_buffer YcbcrConverter::outputOf(const Strip& strip) const {
    zimg_image_buffer output = {};
    output.version = ZIMG_API_VERSION;
    for (unsigned plane = 0; plane < 3; ++plane) {
        if (isPacked())
            output.plane[plane] = {outputRow(strip, plane, 0), static_cast<std::ptrdiff_t>(outputStride),
                                   strip.graph.outputMask};
        else
            output.plane[plane] = {strip.target.data[plane] + static_cast<std::ptrdiff_t>(strip.firstRow) *
                                                                  strip.target.linesize[plane],
                                   static_cast<std::ptrdiff_t>(strip.step) * strip.target.linesize[plane],
                                   ZIMG_BUFFER_MAX};
    }
    return output;
}

std::uint8_t* YcbcrConverter::outputRow(const Strip& strip, unsigned plane, unsigned i) const {
    return strip.buffers.output.get() +
           (plane * strip.graph.outputRows + (i & strip.graph.outputMask)) * outputStride;
}

void YcbcrConverter::unpackRow(const Strip& strip, unsigned i, int left, int right) const {
    const int y = strip.firstRow + static_cast<int>(i) * strip.step;
    const int end = std::min(right, plan.width);
    const float* pixels = strip.rows.pixels(y, left, end, strip.buffers.scratch);
    float* out[3];
    for (unsigned plane = 0; plane < 3; ++plane)
        out[plane] = reinterpret_cast<float*>(strip.buffers.input.get() +
                                              (plane * strip.graph.inputRows + (i & strip.graph.inputMask)) *
                                                  inputStride) +
                     left;
    RowKernels::split(pixels, out, end - left, rgbLimits(plan));
    for (float* row : out)
        std::fill(row + (end - left), row + (right - left), row[end - left - 1]);
    if (format.nb_components == 4 && y < plan.height)
        storeAlpha(strip, pixels, y, left, end - left);
}

void YcbcrConverter::storeAlpha(const Strip& strip, const float* pixels, int y, int left, int count) const {
    std::uint8_t* row = strip.target.data[3] + static_cast<std::ptrdiff_t>(y) * strip.target.linesize[3];
    const int highest = (1 << format.comp[3].depth) - 1;
    const bool opaque = plan.alpha == AlphaMode::None;
    if (highest == 255) {
        std::uint8_t* const out[4] = {nullptr, nullptr, nullptr, row + left};
        if (opaque)
            std::fill_n(out[3], count, std::uint8_t{255});
        else
            RowKernels::planes8(pixels, out, count);
    } else {
        std::uint16_t* const out[4] = {nullptr, nullptr, nullptr,
                                       reinterpret_cast<std::uint16_t*>(row) + left};
        if (opaque)
            std::fill_n(out[3], count, static_cast<std::uint16_t>(highest));
        else
            RowKernels::planes16(pixels, out, count, static_cast<float>(highest));
    }
}

void YcbcrConverter::packRow(const Strip& strip, unsigned i, unsigned left, unsigned right) const {
    const std::uint8_t* luma = outputRow(strip, 0, i);
    const std::uint8_t* cb = outputRow(strip, 1, i);
    const std::uint8_t* cr = outputRow(strip, 2, i);
    const std::ptrdiff_t y = strip.firstRow + static_cast<std::ptrdiff_t>(i) * strip.step;
    std::uint8_t* out = strip.target.data[0] + y * strip.target.linesize[0];
    for (unsigned x = left & ~1U; x < right; x += 2) {
        out[2 * x] = cb[x / 2];
        out[2 * x + 1] = luma[x];
        out[2 * x + 2] = cr[x / 2];
        out[2 * x + 3] = luma[x + 1];
    }
}

}  // namespace

std::unique_ptr<StripConverter> makeYcbcrConverter(const EncodingPlan& plan, int members) {
    return std::make_unique<YcbcrConverter>(plan, members);
}

}  // namespace Morvane::Worker
