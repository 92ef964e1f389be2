#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <span>

#include "worker/picture/ThreadTeam.h"
#include "worker/read/Orientation.h"
#include "worker/read/RgbaRows.h"

namespace Morvane::Worker {

/// Turns decoded pictures into what a host wants: packed RGBA floats at the picture's full depth, with the
/// picture's own matrix and range, its curve and its alpha as they are stored, turned as the movie says.
/// Several threads share a picture. One call at a time.
class FloatConverter {
public:
    explicit FloatConverter(int threads);

    /// Converts `frame` into `rgba`, width x height x 4 floats, top row first; floats are written and never
    /// read. Throws StatusError (NotSupportedByCodec) for a kind of picture that cannot be converted.
    /// REQUIRES: `rgba` has that size.
    void convert(const AVFrame& frame, const Orientation& orientation, std::span<float> rgba);

private:
    template <class Rows>
    void convertRows(const AVFrame& frame, const RgbaRows& target);

    ThreadTeam team;
};

}  // namespace Morvane::Worker
