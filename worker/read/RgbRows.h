#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <cstddef>
#include <cstdint>
#include <vector>

#include "worker/read/RgbaRows.h"
#include "worker/read/RowReader.h"
#include "worker/read/SampleScale.h"

namespace Morvane::Worker {

/// One thread's work on a picture that needs no matrix: R, G, B and maybe A, or Y and maybe A.
class RgbRows {
public:
    RgbRows(const AVFrame& source, const RgbaRows& rows);

    void convert(std::size_t y);

private:
    const AVFrame& frame;
    const RowReader reader;
    const RgbaRows& target;
    std::vector<SampleScale> scales;
    std::vector<std::vector<float>> values;
    std::vector<std::uint8_t> samples;
    std::vector<float> packed;
};

}  // namespace Morvane::Worker
