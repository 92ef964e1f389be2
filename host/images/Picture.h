#pragma once

#include <cstddef>
#include <cstdint>

#include "Kex/Image/CodeTable.h"
#include "platform/LargeMemory.h"

namespace Corvel {

/// A rectangle of pixels in a file's own coordinates: columns from the left, rows from the top, `x` and `y`
/// the first ones, which may be negative.
struct Window {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Window&) const = default;
};

/// The pixels that both have; width and height 0 where they do not meet.
Window overlapOf(const Window& one, const Window& other);

/// Whether a picture can have that size: at least one pixel, and no more than 2 GiB as four channels of
/// floats.
bool isPictureSize(int width, int height);

/// One decoded frame: planar floats in linear light, premultiplied, one plane a channel in the order red,
/// green, blue, alpha, each `height` rows of `width` floats, top row first, without padding between rows.
/// Where whoever takes it allows that, a picture may have the file's codes instead, and a table that says
/// what they mean: half the memory to fill and to read again, and no curve to calculate for each sample. Half
/// floats are such codes, too (CodeTables.h).
///
/// Made to be used again and again: `reset` allocates only when the new picture is larger than any before, so
/// that a render touches the same pages for every frame. One thread at a time.
class Picture {
public:
    using Code = Kex::Image::CodeTable::Code;

    Picture() = default;
    Picture(Picture&&) = default;
    Picture& operator=(Picture&&) = default;

    /// Gives the picture a size and 3 (no alpha) or 4 channels. The samples are arbitrary afterwards. Throws
    /// std::bad_alloc.
    void reset(int width, int height, int channels);

    /// The same for codes of `table`, which must outlive what is read here. REQUIRES: allowsCodes().
    void resetCodes(int width, int height, int channels, const Kex::Image::CodeTable& table);

    /// Whether a reader may leave codes in the picture; not at first.
    bool allowsCodes() const { return codesAllowed; }
    void allowCodes(bool allowed) { codesAllowed = allowed; }

    /// What the codes mean, which `codeRow` gives; null where there are floats, which `row` gives.
    const Kex::Image::CodeTable* table() const { return table_; }

    int width() const { return width_; }
    int height() const { return height_; }
    int channels() const { return channels_; }
    bool hasAlpha() const { return channels_ == 4; }

    /// The first sample of a row of one channel (0 red, 1 green, 2 blue, 3 alpha), `width()` floats; row 0 is
    /// the top one. Valid until the next `reset`. REQUIRES: table() == nullptr.
    float* row(int channel, int y) { return samples() + offset(channel, y); }
    const float* row(int channel, int y) const { return samples() + offset(channel, y); }

    /// As `row`, where there are codes: `width()` of them.
    Code* codeRow(int channel, int y) { return codes() + offset(channel, y); }
    const Code* codeRow(int channel, int y) const { return codes() + offset(channel, y); }

    /// Number of samples from one row of a channel to the next, and from one channel to the next.
    std::size_t rowStride() const { return static_cast<std::size_t>(width_); }
    std::size_t planeStride() const { return rowStride() * static_cast<std::size_t>(height_); }

    /// Makes every sample 0, or of code 0: black, transparent where there is alpha, but for codes whose first
    /// means something else.
    void clear();

    /// Bytes that a picture of that size takes, of floats.
    static std::size_t bytes(int width, int height, int channels);

private:
    std::size_t offset(int channel, int y) const {
        return static_cast<std::size_t>(channel) * planeStride() + static_cast<std::size_t>(y) * rowStride();
    }

    void resetSamples(int width, int height, int channels, const Kex::Image::CodeTable* table);
    std::size_t sampleBytes() const { return table_ != nullptr ? sizeof(Code) : sizeof(float); }
    float* samples() const { return reinterpret_cast<float*>(memory.get()); }
    Code* codes() const { return reinterpret_cast<Code*>(memory.get()); }

    Morvane::Platform::LargeMemory memory;
    std::size_t capacity = 0;  // bytes
    int width_ = 0;
    int height_ = 0;
    int channels_ = 0;
    const Kex::Image::CodeTable* table_ = nullptr;
    bool codesAllowed = false;
};

}  // namespace Corvel
