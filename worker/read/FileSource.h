#pragma once

extern "C" {
#include <libavformat/avio.h>
}

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "worker/read/SourceFile.h"

namespace Morvane::Worker {

/// Lets one of libav's demuxers read a file. One thread at a time.
class FileSource {
public:
    explicit FileSource(SharedSource sourceFile);
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    AVIOContext* context() { return io.get(); }

    /// A range of the file, in bytes.
    struct Range {
        std::int64_t begin, end;
    };
    /// From now on, what is read within these ranges (in order, not overlapping) is not read at all: libav
    /// gets memory of arbitrary content, also beyond the end of the file. For listing packets without their
    /// data.
    void skip(std::vector<Range> ranges) { skipped = std::move(ranges); }

    /// The contents of the file's media data atoms; empty for what is no QuickTime or MPEG-4 file.
    std::vector<Range> mediaDataRanges() const;

private:
    struct FreeContext {
        void operator()(AVIOContext* context) const;
    };
    static int readCallback(void* self, std::uint8_t* buffer, int size);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);
    int read(std::uint8_t* buffer, int size);
    int skippedBytes(int size) const;

    const SharedSource file;
    std::int64_t position = 0;
    std::vector<Range> skipped;
    std::unique_ptr<AVIOContext, FreeContext> io;
};

}  // namespace Morvane::Worker
