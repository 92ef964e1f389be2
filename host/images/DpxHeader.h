#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Corvel {

/// The header of a DPX file, SMPTE 268M: the generic part, and the one for film and television behind it.
class DpxHeader {
public:
    /// Where things are in the header, in bytes.
    enum Field : std::size_t {
        ImageDataOffset = 4,
        Orientation = 768,
        Elements = 770,
        PixelsPerLine = 772,
        LinesPerElement = 776,
        DataSign = 780,
        Descriptor = 800,
        Transfer = 801,
        BitDepth = 803,
        Packing = 804,
        Encoding = 806,
        ElementOffset = 808,
        LinePadding = 812,
        OffsetX = 1408,
        OffsetY = 1412,
        OriginalWidth = 1424,
        OriginalHeight = 1428,
        InputDevice = 1556,
        AspectX = 1628,
        AspectY = 1632,
        FilmRate = 1724,
        TimeCode = 1920,
        TelevisionRate = 1940,
        Gamma = 1948,
    };
    static constexpr std::size_t bytes = 2048;
    static constexpr std::uint64_t undefined = 0xFFFFFFFF;

    /// Reads a file's; see isDpx(). Does not throw.
    explicit DpxHeader(const std::string& path);
    /// The header at the beginning of a whole file.
    explicit DpxHeader(const std::vector<unsigned char>& file);

    /// False for what is too short for a picture and for other files; nothing else may be asked then.
    bool isDpx() const { return known; }
    /// False for a file that ends within the header; what is missing reads as 0.
    bool isWhole() const { return whole; }
    bool isBigEndian() const { return stored[0] == 'S'; }
    /// Whether there is a header for film and television. Some programs leave it out, and put the pixels
    /// where it would be.
    bool hasIndustryPart() const { return number(ImageDataOffset, 4) >= bytes; }
    /// Whether its one picture is RGB of 10 bits, filled to 32-bit words by method A, not compressed, line
    /// after line without padding.
    bool isTenBitRgb() const;

    /// A whole number of `size` bytes.
    std::uint64_t number(Field field, std::size_t size) const;
    /// A number that may be left undefined, which is all ones, or 0.
    std::uint64_t numberOr(Field field, std::size_t size, std::uint64_t otherwise) const;
    float real(Field field) const;
    /// At most `size` bytes, up to the first that is 0; empty where it is left undefined.
    std::string text(Field field, std::size_t size) const;

private:
    void recognise(std::size_t count);

    std::array<unsigned char, bytes> stored{};
    bool known = false;
    bool whole = false;
};

}  // namespace Corvel
