#include "worker/read/YcbcrStrips.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <zimg.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "worker/Status.h"
#include "worker/read/SampleScale.h"

namespace Morvane::Worker {

namespace {

constexpr std::size_t alignment = 64;  // bytes; of every row, for zimg's vector instructions
constexpr int usualRowsOfStrip = 64;

int roundUp(int value, int shift) {
    return (value + (1 << shift) - 1) >> shift << shift;
}

std::size_t alignedBytes(std::size_t bytes) {
    return (bytes + alignment - 1) / alignment * alignment;
}

[[noreturn]] void fail() {
    char reason[256] = "";
    zimg_get_last_error(reason, sizeof reason);
    throw StatusError(Status::NotSupportedByCodec, std::string("cannot convert the picture: ") + reason);
}

void check(zimg_error_code_e result) {
    if (result != ZIMG_ERROR_SUCCESS)
        fail();
}

/// The numbers are the same; what needs more than a matrix is left out, but for the constant-luminance form,
/// whose matrix is nearly that of the usual one.
zimg_matrix_coefficients_e matrixOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
        case AVCOL_SPC_FCC:
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_SMPTE240M:
        case AVCOL_SPC_YCGCO:
        case AVCOL_SPC_BT2020_NCL:
            return static_cast<zimg_matrix_coefficients_e>(matrix);
        case AVCOL_SPC_BT2020_CL:
            return ZIMG_MATRIX_BT2020_NCL;
        default:
            throw StatusError(Status::NotSupportedByCodec, std::string("pictures of colour matrix ") +
                                                               av_color_space_name(matrix) +
                                                               " cannot be converted");
    }
}

zimg_pixel_type_e pixelTypeOf(std::size_t sampleBytes) {
    return sampleBytes == 1 ? ZIMG_PIXEL_BYTE : sampleBytes == 2 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_FLOAT;
}

struct FreeGraph {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};

struct FreeAligned {
    void operator()(void* memory) const { std::free(memory); }
};
using Bytes = std::unique_ptr<std::uint8_t[], FreeAligned>;

Bytes allocate(std::size_t bytes) {
    Bytes memory(
        static_cast<std::uint8_t*>(std::aligned_alloc(alignment, alignedBytes(std::max(bytes, alignment)))));
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

/// Rows that come and go: row i lies where i + number of rows will.
struct Ring {
    Bytes bytes;
    std::size_t stride = 0;  // bytes
    unsigned mask = 0;
    unsigned rows = 0;

    Ring(std::size_t rowBytes, unsigned rowsNeeded, unsigned allRows)
        : stride(alignedBytes(rowBytes)), mask(zimg_select_buffer_mask(rowsNeeded)) {
        rows = mask == ZIMG_BUFFER_MAX ? allRows : mask + 1;
        bytes = allocate(3 * rows * stride);
    }
    void* row(int plane, unsigned i) const {
        return bytes.get() + (static_cast<std::size_t>(plane) * rows + (i & mask)) * stride;
    }
};

}  // namespace

YcbcrStrips::Kind YcbcrStrips::Kind::of(const AVFrame& frame) {
    const PictureColour colour = PictureColour::of(frame);
    return {frame.format,  frame.width,      frame.height,         frame.interlaced_frame != 0,
            colour.matrix, colour.fullRange, colour.chromaLocation};
}

YcbcrStrips::Cut::Cut(const Kind& kind) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(kind.format));
    chromaShiftX = format.log2_chroma_w;
    chromaShiftY = format.log2_chroma_h;
    // Rows of chroma that belong to two fields must not be mixed; an odd row would belong to neither.
    fields = kind.interlaced && chromaShiftY > 0 && kind.height % (2 << chromaShiftY) == 0 ? 2 : 1;
    rows = kind.height / fields;
    paddedWidth = roundUp(kind.width, chromaShiftX);
    // The interpolation takes two rows of chroma on each side.
    const int margin = chromaShiftY == 0 ? 0 : 4 << chromaShiftY;
    rowsOfWindow = std::min(roundUp(rows, chromaShiftY), usualRowsOfStrip + 2 * margin);
    rowsOfStrip = rowsOfWindow >= rows ? rows : usualRowsOfStrip;
    strips = (rows + rowsOfStrip - 1) / rowsOfStrip;
}

struct YcbcrStrips::Graph {
    Graph(const Kind& kind, const Cut& cut, std::size_t sampleBytes, zimg_field_parity_e parity);

    std::unique_ptr<zimg_filter_graph, FreeGraph> graph;
    unsigned inputRows = 0;
    unsigned outputRows = 0;
    std::size_t workBytes = 0;
};

YcbcrStrips::Graph::Graph(const Kind& kind, const Cut& cut, std::size_t sampleBytes,
                          zimg_field_parity_e parity) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(kind.format));
    zimg_image_format from, to;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = static_cast<unsigned>(cut.paddedWidth);
    from.height = static_cast<unsigned>(cut.rowsOfWindow);
    from.field_parity = parity;
    to = from;
    from.pixel_type = pixelTypeOf(sampleBytes);
    from.subsample_w = static_cast<unsigned>(cut.chromaShiftX);
    from.subsample_h = static_cast<unsigned>(cut.chromaShiftY);
    from.color_family = ZIMG_COLOR_YUV;
    from.matrix_coefficients = matrixOf(kind.matrix);
    from.depth = static_cast<unsigned>(format.comp[0].depth);
    from.pixel_range = kind.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    // The same numbers, but that libav counts from 1.
    from.chroma_location = static_cast<zimg_chroma_location_e>(kind.chromaLocation - 1);
    to.pixel_type = ZIMG_PIXEL_FLOAT;
    to.color_family = ZIMG_COLOR_RGB;
    to.matrix_coefficients = ZIMG_MATRIX_RGB;
    zimg_graph_builder_params options;
    zimg_graph_builder_params_default(&options, ZIMG_API_VERSION);
    options.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    options.cpu_type = ZIMG_CPU_AUTO_64B;
    graph.reset(zimg_filter_graph_build(&from, &to, &options));
    if (graph == nullptr)
        fail();
    check(zimg_filter_graph_get_input_buffering(graph.get(), &inputRows));
    check(zimg_filter_graph_get_output_buffering(graph.get(), &outputRows));
    check(zimg_filter_graph_get_tmp_size(graph.get(), &workBytes));
}

/// What one thread needs while it converts a strip.
struct YcbcrStrips::Memory {
    Memory(const Cut& cut, const Graph& graph, std::size_t sampleBytes)
        : input(static_cast<std::size_t>(cut.paddedWidth) * sampleBytes, graph.inputRows,
                static_cast<unsigned>(cut.rowsOfWindow)),
          output(static_cast<std::size_t>(cut.paddedWidth) * sizeof(float), graph.outputRows,
                 static_cast<unsigned>(cut.rowsOfWindow)),
          work(allocate(graph.workBytes)),
          alphaSamples(static_cast<std::size_t>(cut.paddedWidth) * sizeof(float)),
          alpha(static_cast<std::size_t>(cut.paddedWidth)) {}

    Ring input, output;
    Bytes work;
    std::vector<std::uint8_t> alphaSamples;
    std::vector<float> alpha;
};

/// One strip on its way, for zimg's callbacks, which must not throw. Rows are counted within the window.
struct YcbcrStrips::Job {
    const YcbcrStrips& strips;
    const RowReader& reader;
    const RgbaRows& target;
    Memory& memory;
    int field;
    int windowStart;
    int firstRow, endRow;  ///< that are stored, within the field

    static int read(void* self, unsigned i, unsigned, unsigned) {
        static_cast<const Job*>(self)->readRows(i);
        return 0;
    }
    static int store(void* self, unsigned i, unsigned, unsigned) {
        static_cast<const Job*>(self)->storeRow(i);
        return 0;
    }
    void readRows(unsigned i) const;
    void readRow(int component, int row, int rows, int width, int paddedWidth, void* target) const;
    void storeRow(unsigned i) const;
};

/// zimg wants as many rows of luma as one row of chroma stands for, and that one.
void YcbcrStrips::Job::readRows(unsigned i) const {
    const Cut& cut = strips.cut;
    const int row = windowStart + static_cast<int>(i);
    for (int luma = 0; luma < 1 << cut.chromaShiftY; ++luma)
        readRow(0, row + luma, cut.rows, strips.kind.width, cut.paddedWidth,
                memory.input.row(0, i + static_cast<unsigned>(luma)));
    const int chromaRows = roundUp(cut.rows, cut.chromaShiftY) >> cut.chromaShiftY;
    const int chromaWidth = cut.paddedWidth >> cut.chromaShiftX;
    for (int component = 1; component <= 2; ++component)
        readRow(component, row >> cut.chromaShiftY, chromaRows, chromaWidth, chromaWidth,
                memory.input.row(component, i >> cut.chromaShiftY));
}

/// Where the picture ends within a chroma sample, its last row and column are repeated.
void YcbcrStrips::Job::readRow(int component, int row, int rows, int width, int paddedWidth,
                               void* samples) const {
    reader.read(component, std::min(row, rows - 1) * strips.cut.fields + field, width, samples);
    const std::size_t bytes = reader.sampleBytes();
    auto* last = static_cast<std::uint8_t*>(samples) + static_cast<std::size_t>(width - 1) * bytes;
    for (int x = width; x < paddedWidth; ++x)
        std::copy_n(last, bytes, last + static_cast<std::size_t>(x - width + 1) * bytes);
}

void YcbcrStrips::Job::storeRow(unsigned i) const {
    const int row = windowStart + static_cast<int>(i);
    if (row < firstRow || row >= endRow)
        return;
    const int y = row * strips.cut.fields + field;
    const float* alpha = nullptr;
    constexpr int alphaComponent = 3;
    if (reader.components() > alphaComponent) {
        const auto width = static_cast<std::size_t>(strips.kind.width);
        reader.read(alphaComponent, y, strips.kind.width, memory.alphaSamples.data());
        // Alpha has no video range.
        SampleScale::ofBits(reader.depth(alphaComponent), true)
            .apply(memory.alphaSamples.data(), reader.sampleBytes(), width, memory.alpha.data());
        alpha = memory.alpha.data();
    }
    const auto rgb = [&](int plane) { return static_cast<const float*>(memory.output.row(plane, i)); };
    target.store(static_cast<std::size_t>(y), rgb(0), rgb(1), rgb(2), alpha);
}

YcbcrStrips::YcbcrStrips(const Kind& pictures, int threads) : kind(pictures), cut(pictures) {
    AVFrame frame{};
    frame.format = kind.format;
    const std::size_t sampleBytes = RowReader(frame).sampleBytes();
    if (cut.fields == 1)
        graphs.push_back(std::make_unique<Graph>(kind, cut, sampleBytes, ZIMG_FIELD_PROGRESSIVE));
    else
        for (const zimg_field_parity_e parity : {ZIMG_FIELD_TOP, ZIMG_FIELD_BOTTOM})
            graphs.push_back(std::make_unique<Graph>(kind, cut, sampleBytes, parity));
    for (int thread = 0; thread < threads; ++thread)
        memory.push_back(std::make_unique<Memory>(cut, *graphs.back(), sampleBytes));
}

YcbcrStrips::~YcbcrStrips() = default;

std::size_t YcbcrStrips::count() const {
    return static_cast<std::size_t>(cut.strips) * graphs.size();
}

/// The window lies around the strip, but within the picture.
int YcbcrStrips::firstRowOfWindow(int strip) const {
    const int margin = (cut.rowsOfWindow - cut.rowsOfStrip) / 2 >> cut.chromaShiftY << cut.chromaShiftY;
    const int latest = roundUp(cut.rows, cut.chromaShiftY) - cut.rowsOfWindow;
    return std::clamp(strip * cut.rowsOfStrip - margin, 0, latest);
}

/// Whether zimg can read the decoder's picture itself: the rows are as it wants them, and none is to be
/// repeated.
bool YcbcrStrips::canReadInPlace(const AVFrame& frame, const RowReader& reader) const {
    if (kind.width != cut.paddedWidth || cut.rows != roundUp(cut.rows, cut.chromaShiftY))
        return false;
    for (int plane = 0; plane < 3; ++plane) {
        const auto address = reinterpret_cast<std::uintptr_t>(frame.data[plane]);
        const std::ptrdiff_t stride = frame.linesize[plane];
        // Where rows go upwards in memory, their ends are not known to have room for whole vectors.
        if (!reader.isPlain(plane) || stride <= 0 ||
            (address | static_cast<std::uintptr_t>(stride)) % alignment != 0)
            return false;
    }
    return true;
}

void YcbcrStrips::convert(const AVFrame& frame, std::size_t strip, int thread, const RgbaRows& target) {
    const int field = static_cast<int>(strip) % cut.fields;
    const int stripOfField = static_cast<int>(strip) / cut.fields;
    const RowReader reader(frame);
    Memory& own = *memory[static_cast<std::size_t>(thread)];
    const int firstRow = stripOfField * cut.rowsOfStrip;
    Job job{*this,    reader,
            target,   own,
            field,    firstRowOfWindow(stripOfField),
            firstRow, std::min(firstRow + cut.rowsOfStrip, cut.rows)};
    zimg_image_buffer_const input{ZIMG_API_VERSION, {}};
    zimg_image_buffer output{ZIMG_API_VERSION, {}};
    const bool inPlace = canReadInPlace(frame, reader);
    for (int plane = 0; plane < 3; ++plane) {
        if (inPlace) {
            const std::ptrdiff_t stride = frame.linesize[plane];
            const int row = job.windowStart >> (plane == 0 ? 0 : cut.chromaShiftY);
            input.plane[plane] = {frame.data[plane] + (row * cut.fields + field) * stride,
                                  stride * cut.fields, ZIMG_BUFFER_MAX};
        } else {
            input.plane[plane] = {own.input.row(plane, 0), static_cast<std::ptrdiff_t>(own.input.stride),
                                  own.input.mask};
        }
        output.plane[plane] = {own.output.row(plane, 0), static_cast<std::ptrdiff_t>(own.output.stride),
                               own.output.mask};
    }
    check(zimg_filter_graph_process(graphs[static_cast<std::size_t>(field)]->graph.get(), &input, &output,
                                    own.work.get(), inPlace ? nullptr : Job::read, &job, Job::store, &job));
}

}  // namespace Morvane::Worker
