#pragma once

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

#include <cstddef>
#include <cstdint>

namespace Morvane::Worker {

/// Reads single rows of a decoded picture, whatever its pixel format: planar or packed, of either byte order,
/// with a palette or not. Copies nothing but the rows that are asked for. Any thread, while the picture
/// lives.
class RowReader {
public:
    /// REQUIRES: isReadable(source).
    explicit RowReader(const AVFrame& source);

    /// Whether the pixel format is one of pictures: no sensor mosaic, no memory of a graphics card.
    static bool isReadable(const AVFrame& frame);

    /// Bytes of a sample in a row: 1 or 2 for integers, 4 for floats.
    std::size_t sampleBytes() const { return bytes; }
    bool isFloat() const;

    /// Components are counted Y, Cb, Cr, A or R, G, B, A; in grey pictures Y, A.
    int components() const;
    /// Bits of the component.
    int depth(int component) const;

    /// Puts `count` samples of row `y` of the component's plane into `row`, integers from 0 to 2^depth - 1.
    void read(int component, int y, int count, void* row) const;

    /// Whether the component's rows lie in memory just as `read` gives them.
    bool isPlain(int component) const;
    /// Where row `y` of the component lies. REQUIRES: isPlain(component).
    const void* plainRow(int component, int y) const;

private:
    bool hasPalette() const;
    bool hasPlainLayout(int component) const;
    void readThroughPalette(int component, int y, int count, std::uint16_t* row) const;

    const AVFrame& frame;
    const AVPixFmtDescriptor& format;
    std::size_t bytes;
};

}  // namespace Morvane::Worker
