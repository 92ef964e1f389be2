#include "worker/read/FileSource.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/intreadwrite.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

namespace Morvane::Worker {

namespace {

constexpr int bufferBytes = 1 << 16;

}  // namespace

void FileSource::FreeContext::operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
}

FileSource::FileSource(SharedSource sourceFile) : file(std::move(sourceFile)) {
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    if (buffer != nullptr)
        io.reset(avio_alloc_context(buffer, bufferBytes, 0, this, readCallback, nullptr, seekCallback));
    if (io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

int FileSource::readCallback(void* self, std::uint8_t* buffer, int size) {
    return static_cast<FileSource*>(self)->read(buffer, size);
}

std::int64_t FileSource::seekCallback(void* self, std::int64_t offset, int whence) {
    auto& source = *static_cast<FileSource*>(self);
    switch (whence & ~AVSEEK_FORCE) {
        case AVSEEK_SIZE:
            return source.file->size();
        case SEEK_SET:
            break;
        case SEEK_CUR:
            offset += source.position;
            break;
        case SEEK_END:
            offset += source.file->size();
            break;
        default:
            return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    return source.position = offset;
}

/// How many of the next `size` bytes need not be read, 0 when the next byte must be.
int FileSource::skippedBytes(int size) const {
    const auto after = std::upper_bound(skipped.begin(), skipped.end(), position,
                                        [](std::int64_t at, const Range& range) { return at < range.begin; });
    if (after == skipped.begin() || std::prev(after)->end <= position)
        return 0;
    return static_cast<int>(std::min<std::int64_t>(size, std::prev(after)->end - position));
}

int FileSource::read(std::uint8_t* buffer, int size) {
    int count = skippedBytes(size);
    if (count == 0) {
        count = static_cast<int>(file->read(buffer, static_cast<std::size_t>(size), position));
        if (count == -1)
            return AVERROR(errno);
        if (count == 0)
            return AVERROR_EOF;
    }
    position += count;
    return count;
}

// ISO/IEC 14496-12, 4.2: a file is a row of boxes, each a 32-bit size and a type; size 1 means that a 64-bit
// size follows, size 0 that the box reaches to the end of the file.
std::vector<FileSource::Range> FileSource::mediaDataRanges() const {
    std::vector<Range> ranges;
    std::uint8_t header[16];
    for (std::int64_t at = 0; file->read(header, sizeof header, at) >= 8;) {
        std::uint64_t size = AV_RB32(header);
        const std::int64_t headerBytes = size == 1 ? 16 : 8;
        if (size == 1)
            size = AV_RB64(header + 8);
        const bool isLast = size == 0;
        constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max() / 2;
        if (!isLast && (size < static_cast<std::uint64_t>(headerBytes) || size > most))
            break;
        const std::int64_t end =
            isLast ? static_cast<std::int64_t>(most) : at + static_cast<std::int64_t>(size);
        if (std::memcmp(header + 4, "mdat", 4) == 0)
            ranges.push_back({at + headerBytes, end});
        if (isLast)
            break;
        at = end;
    }
    return ranges;
}

}  // namespace Morvane::Worker
