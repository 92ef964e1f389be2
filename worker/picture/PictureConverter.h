#pragma once

#include "worker/codec/EncodingPlan.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

namespace Morvane::Worker {

/// Turns float pixels into the codec's pictures in one pass over memory: each strip of rows is read out of
/// shared memory once, split, converted and rounded to nearest while it is in the cache. No step goes through
/// fewer bits than the picture has. Values are limited to what the picture can hold, R, G and B each by
/// itself; what is not a number becomes 0.
class PictureConverter {
public:
    /// Prepares the conversion of `plan`; its threads convert strips side by side.
    explicit PictureConverter(const EncodingPlan& plan);
    ~PictureConverter();
    PictureConverter(const PictureConverter&) = delete;
    PictureConverter& operator=(const PictureConverter&) = delete;

    /// Converts `rgba` (width x height x 4 floats, RGBA, top row first) into `target`, a writable frame of
    /// the plan's pixel format and size. Reads every float exactly once. One call at a time.
    void convert(const float* rgba, AVFrame& target);

private:
    class Strips;
    std::unique_ptr<Strips> strips;
};

}  // namespace Morvane::Worker
