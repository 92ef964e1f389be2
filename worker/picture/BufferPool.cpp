#include "worker/picture/BufferPool.h"

#include <cstdint>
#include <memory>
#include <new>

#include "platform/LargeMemory.h"

namespace Morvane::Worker {

namespace {

void freeBuffer(void* memory, std::uint8_t*) {
    delete static_cast<Platform::LargeMemory*>(memory);
}

AVBufferRef* allocate(std::size_t bytes) try {
    auto memory = std::make_unique<Platform::LargeMemory>(Platform::allocateLarge(bytes));
    AVBufferRef* buffer =
        av_buffer_create(reinterpret_cast<std::uint8_t*>(memory->get()), bytes, freeBuffer, memory.get(), 0);
    if (buffer != nullptr)
        static_cast<void>(memory.release());
    return buffer;
} catch (const std::bad_alloc&) {
    return nullptr;
}

}  // namespace

BufferPool::~BufferPool() {
    av_buffer_pool_uninit(&pool);
}

AVBufferRef* BufferPool::take(std::size_t bytes) {
    const std::lock_guard lock(mutex);
    if (bytes > bufferBytes) {
        av_buffer_pool_uninit(&pool);
        pool = av_buffer_pool_init(bytes, allocate);
        bufferBytes = bytes;
    }
    AVBufferRef* buffer = pool == nullptr ? nullptr : av_buffer_pool_get(pool);
    if (buffer == nullptr) {
        // There may be room for a smaller one.
        av_buffer_pool_uninit(&pool);
        bufferBytes = 0;
    }
    return buffer;
}

}  // namespace Morvane::Worker
