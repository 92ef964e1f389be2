#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <cstddef>
#include <memory>
#include <vector>

#include "worker/read/PictureColour.h"
#include "worker/read/RgbaRows.h"
#include "worker/read/RowReader.h"

namespace Morvane::Worker {

/// Converts YCbCr pictures of one kind to RGB floats, strip by strip, so that several threads can share a
/// picture and everything stays in the cache: rows are read, chroma is interpolated, the matrix applied and
/// pixels are stored in one pass.
class YcbcrStrips {
public:
    /// Everything that the conversion depends on.
    struct Kind {
        int format = -1;  ///< libav's pixel format
        int width = 0, height = 0;
        bool interlaced = false;
        AVColorSpace matrix = AVCOL_SPC_BT709;
        bool fullRange = false;
        AVChromaLocation chromaLocation = AVCHROMA_LOC_LEFT;

        static Kind of(const AVFrame& frame);
        bool operator==(const Kind&) const = default;
    };

    /// Throws StatusError (NotSupportedByCodec) where the kind cannot be converted.
    YcbcrStrips(const Kind& pictures, int threads);
    ~YcbcrStrips();

    const Kind kind;

    /// How many strips a picture has.
    std::size_t count() const;

    /// Converts strip `strip` of `frame`, which must be of the kind. `thread` counts from 0 and is never the
    /// same in two calls at a time. Throws StatusError (CodecFailed).
    void convert(const AVFrame& frame, std::size_t strip, int thread, const RgbaRows& target);

private:
    struct Graph;
    struct Memory;
    struct Job;

    /// How a picture is cut into strips. Rows are counted within a field where there are two.
    struct Cut {
        explicit Cut(const Kind& kind);

        int chromaShiftX, chromaShiftY;  ///< of the pixel format
        int fields;                      ///< 2 where chroma is interpolated within each field
        int rows;                        ///< of a field
        int paddedWidth;                 ///< whole chroma samples
        int rowsOfStrip;                 ///< that a strip stores
        int rowsOfWindow;                ///< that a strip reads: chroma interpolation needs some around it
        int strips;                      ///< of a field
    };

    int firstRowOfWindow(int strip) const;
    bool canReadInPlace(const AVFrame& frame, const RowReader& reader) const;

    const Cut cut;
    std::vector<std::unique_ptr<Graph>> graphs;   ///< one for each field
    std::vector<std::unique_ptr<Memory>> memory;  ///< one for each thread
};

}  // namespace Morvane::Worker
