#include "worker/picture/BufferPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Morvane::Worker {
namespace {

TEST(BufferPool, GivesTheSameMemoryAgain) {
    BufferPool sut;
    AVBufferRef* buffer = sut.take(1000);
    const void* first = buffer->data;
    av_buffer_unref(&buffer);
    buffer = sut.take(10);
    EXPECT_EQ(buffer->data, first);
    av_buffer_unref(&buffer);
}

TEST(BufferPool, GrowsWithWhatIsAskedFor) {
    BufferPool sut;
    AVBufferRef* small = sut.take(1000);
    AVBufferRef* large = sut.take(std::size_t{10} << 20);
    EXPECT_EQ(small->size, 1000U);
    EXPECT_EQ(large->size, std::size_t{10} << 20);
    std::memset(large->data, 7, large->size);
    av_buffer_unref(&small);
    av_buffer_unref(&large);
}

TEST(BufferPool, StartsBlack) {
    BufferPool sut;
    AVBufferRef* buffer = sut.take(std::size_t{5} << 20);
    EXPECT_TRUE(std::all_of(buffer->data, buffer->data + buffer->size,
                            [](std::uint8_t value) { return value == 0; }));
    av_buffer_unref(&buffer);
}

TEST(BufferPool, BuffersOutliveThePool) {
    AVBufferRef* buffer = nullptr;
    {
        BufferPool sut;
        buffer = sut.take(100);
    }
    buffer->data[99] = 1;
    av_buffer_unref(&buffer);
}

TEST(BufferPool, SaysWhenThereIsNoMemory) {
    BufferPool sut;
    EXPECT_EQ(sut.take(std::size_t{1} << 62), nullptr);
    AVBufferRef* buffer = sut.take(100);
    EXPECT_NE(buffer, nullptr);
    av_buffer_unref(&buffer);
}

}  // namespace
}  // namespace Morvane::Worker
