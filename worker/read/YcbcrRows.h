#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "worker/read/ChromaInterpolation.h"
#include "worker/read/FloatKernels.h"
#include "worker/read/RgbaRows.h"
#include "worker/read/RowReader.h"
#include "worker/read/YcbcrMatrix.h"

namespace Morvane::Worker {

/// One thread's work on a YCbCr picture, row by row, so that everything between the decoder's samples and the
/// pixels stays in the cache: chroma is interpolated, the matrix applied and the row stored in one go.
class YcbcrRows {
public:
    /// Throws StatusError (NotSupportedByCodec) for a matrix that cannot be applied.
    YcbcrRows(const AVFrame& source, const RgbaRows& rows);

    void convert(std::size_t y);

private:
    /// Rows that do not lie in memory as they are needed, read once while they are.
    struct ReadRows {
        std::array<int, 8> numbers;
        std::vector<std::uint8_t> samples;
    };

    template <typename Sample>
    void convertRow(int y);
    template <typename Sample>
    const Sample* row(int component, int y);
    template <typename Sample>
    void readChroma(int component, int y, std::vector<float>& widened);

    const AVFrame& frame;
    const RowReader reader;
    const RgbaRows& target;
    const YcbcrMatrix matrix;
    const int fields;  ///< 2 where chroma is interpolated within each field
    const int chromaWidth, chromaRowsOfField;
    ChromaInterpolation across;
    std::array<ChromaInterpolation, 2> down;  ///< of each field
    std::array<ReadRows, 4> readRows;         ///< of each component
    std::vector<float> chroma, cb, cr, alpha, packed;
};

}  // namespace Morvane::Worker
