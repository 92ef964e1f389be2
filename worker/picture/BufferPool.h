#pragma once

#include <cstddef>
#include <mutex>

extern "C" {
#include <libavutil/buffer.h>
}

namespace Morvane::Worker {

/// Memory for pictures and packets of the codec libraries, in large pages where the system has them. It comes
/// back when the last reference goes, so that a movie allocates only as many buffers as are ever in use at
/// once, and no page is touched for the first time twice. What is in a buffer that is used for the first time
/// is 0. Any thread.
class BufferPool {
public:
    BufferPool() = default;
    /// Buffers that are in use stay good.
    ~BufferPool();
    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;

    /// A buffer of `bytes` bytes or more, as large as the largest that was ever asked for; null where there
    /// is no memory. The reference is the caller's.
    AVBufferRef* take(std::size_t bytes);

private:
    std::mutex mutex;
    std::size_t bufferBytes = 0;
    AVBufferPool* pool = nullptr;
};

}  // namespace Morvane::Worker
