#pragma once

#include "worker/LibavPointers.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/picture/BufferPool.h"

namespace Morvane::Worker {

/// Pictures in the plan's format, whose memory comes back to the pool when the last reference goes, so that a
/// movie allocates only as many as are ever in use at once. Planes are padded to whole chroma samples, rows
/// start at multiples of 64 bytes, as conversion wants them. Usable from several threads.
class PicturePool {
public:
    explicit PicturePool(const EncodingPlan& plan);

    /// A writable picture with size, format, colour tags, field order and pixel aspect set; its samples are
    /// those of an earlier picture. Throws std::bad_alloc.
    FramePointer take();

private:
    const EncodingPlan plan;
    int linesizes[4] = {};
    std::size_t offsets[4] = {};
    std::size_t bytes = 0;  // of a picture
    BufferPool pool;
};

}  // namespace Morvane::Worker
