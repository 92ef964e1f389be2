#pragma once

#include "worker/codec/EncodingPlan.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>
#include <vector>

namespace Morvane::Worker {

/// The rows of one float picture as a conversion wants them: straight or premultiplied.
class RowSource {
public:
    RowSource(const EncodingPlan& encodingPlan, const float* pixels) : plan(encodingPlan), rgba(pixels) {}

    /// Row `y`, 4 floats a pixel, RGBA. `scratch` may be used for them and then holds them until its next
    /// use.
    const float* pixels(int y, std::vector<float>& scratch) const;

private:
    const EncodingPlan& plan;
    const float* const rgba;
};

/// Converts strips of rows into a picture of one family of pixel formats.
class StripConverter {
public:
    virtual ~StripConverter() = default;

    /// Rows of a strip; strips can be converted side by side. At least 1.
    virtual int stripRows() const = 0;

    /// Converts rows [firstRow, firstRow + rowCount). `member` says which thread this is and so whose
    /// buffers.
    virtual void convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) = 0;
};

/// For RGB in any layout: own kernels, one pass.
std::unique_ptr<StripConverter> makeRgbConverter(const EncodingPlan& plan, int members);

/// For YCbCr: own kernels, row by row; what lies between the floats and the samples stays in the cache.
std::unique_ptr<StripConverter> makeYcbcrConverter(const EncodingPlan& plan, int members);

/// For the fixed palette.
std::unique_ptr<StripConverter> makePaletteConverter(const EncodingPlan& plan, int members);

}  // namespace Morvane::Worker
