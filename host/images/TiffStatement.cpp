#include <algorithm>
#include <initializer_list>
#include <vector>

#include "host/images/FileBytes.h"
#include "host/images/IntegerHeader.h"
#include "host/images/TiffDirectory.h"

namespace Corvel {
namespace {

// TIFF 6.0; the Exif directory and what it says of colours: Exif 2.3.
enum Tag : std::uint16_t {
    SubfileType = 254,
    Width = 256,
    Height = 257,
    BitsPerSample = 258,
    Compression = 259,
    Photometric = 262,
    FillOrder = 266,
    DocumentName = 269,
    ImageDescription = 270,
    StripOffsets = 273,
    Orientation = 274,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    ResolutionX = 282,
    ResolutionY = 283,
    PlanarConfiguration = 284,
    ResolutionUnit = 296,
    PageNumber = 297,
    Software = 305,
    DateTime = 306,
    Artist = 315,
    HostComputer = 316,
    Predictor = 317,
    WhitePoint = 318,
    PrimaryChromaticities = 319,
    ExtraSamples = 338,
    SampleFormat = 339,
    Copyright = 33432,
    Exif = 34665,
    ExifColourSpace = 40961,
};

// Those that are looked at, and those by which nobody but people goes.
constexpr std::uint16_t usualTags[] = {SubfileType,
                                       Width,
                                       Height,
                                       BitsPerSample,
                                       Compression,
                                       Photometric,
                                       FillOrder,
                                       DocumentName,
                                       ImageDescription,
                                       StripOffsets,
                                       Orientation,
                                       SamplesPerPixel,
                                       RowsPerStrip,
                                       StripByteCounts,
                                       ResolutionX,
                                       ResolutionY,
                                       PlanarConfiguration,
                                       ResolutionUnit,
                                       PageNumber,
                                       Software,
                                       DateTime,
                                       Artist,
                                       HostComputer,
                                       Predictor,
                                       WhitePoint,
                                       PrimaryChromaticities,
                                       ExtraSamples,
                                       SampleFormat,
                                       Copyright,
                                       Exif};

bool hasOnlyUsualTags(const TiffDirectory& directory) {
    return std::all_of(directory.entries.begin(), directory.entries.end(), [](const auto& entry) {
        return std::find(std::begin(usualTags), std::end(usualTags), entry.first) != std::end(usualTags);
    });
}

bool isOneOf(std::optional<std::uint32_t> value, std::initializer_list<std::uint32_t> usual) {
    return value && std::find(usual.begin(), usual.end(), *value) != usual.end();
}

// As many pixels an inch across as down, or nothing said of it.
bool isSquare(const TiffDirectory& directory) {
    const auto across = directory.entries.find(ResolutionX);
    const auto down = directory.entries.find(ResolutionY);
    if (across == directory.entries.end() || down == directory.entries.end()) {
        return across == down;
    }
    const std::vector<std::uint32_t>& fraction = across->second.values;
    return fraction.size() == 2 && fraction[0] != 0 && fraction[1] != 0 && fraction == down->second.values;
}

// Upright, and the one picture of its file.
bool isPlain(const TiffDirectory& directory) {
    return directory.next == 0 && isOneOf(directory.number(SubfileType, 0), {0}) &&
           isOneOf(directory.number(Orientation, 1), {1}) && isSquare(directory);
}

// Strips of whole pixels, of as many as there must be.
bool isStoredAsUsual(const TiffDirectory& directory) {
    constexpr std::uint32_t none = 1, lzw = 5, deflate = 8, oldDeflate = 32946, packBits = 32773;
    const std::uint32_t height = directory.number(Height, {}).value_or(0);
    const std::uint32_t rows = std::min(directory.number(RowsPerStrip, {}).value_or(0), height);
    const auto countOf = [&](Tag tag) {
        const auto found = directory.entries.find(tag);
        return found == directory.entries.end() ? 0 : found->second.values.size();
    };
    return isOneOf(directory.number(Compression, {}), {none, lzw, deflate, oldDeflate, packBits}) &&
           isOneOf(directory.number(FillOrder, 1), {1}) && isOneOf(directory.number(Predictor, 1), {1, 2}) &&
           isOneOf(directory.number(PlanarConfiguration, 1), {1}) &&
           isOneOf(directory.number(SampleFormat, 1), {1}) && rows != 0 &&
           countOf(StripOffsets) == (height - 1) / rows + 1 &&
           countOf(StripByteCounts) == countOf(StripOffsets);
}

// Sets channels, bits and the kind of alpha.
bool readSamples(const TiffDirectory& directory, IntegerHeader& header) {
    constexpr std::uint32_t blackIsZero = 1, rgb = 2;
    constexpr std::uint32_t multiplied = 1, straight = 2;
    const std::optional<std::uint32_t> photometric = directory.number(Photometric, {});
    const std::uint32_t channels = directory.number(SamplesPerPixel, {}).value_or(0);
    const std::optional<std::uint32_t> bits = directory.number(BitsPerSample, {});
    const bool hasExtra = directory.entries.count(ExtraSamples) != 0;
    if (!isOneOf(photometric, {blackIsZero, rgb}) || !isOneOf(bits, {8, 16}) ||
        !isOneOf(channels - (photometric == rgb ? 2 : 0), {1, 2}) || hasExtra != (channels % 2 == 0)) {
        return false;
    }
    const auto valuesOf = [&](Tag tag) { return directory.entries.at(tag).values.size(); };
    if (valuesOf(BitsPerSample) != channels || (hasExtra && valuesOf(ExtraSamples) != 1) ||
        (directory.entries.count(SampleFormat) != 0 && valuesOf(SampleFormat) != channels)) {
        return false;
    }
    const std::optional<std::uint32_t> extra = directory.number(ExtraSamples, multiplied);
    header.channels = static_cast<int>(channels);
    header.bits = static_cast<int>(*bits);
    header.straightAlpha = extra == straight;
    return isOneOf(extra, {multiplied, straight});
}

// The image library writes one with sRGB as its colour space, which is what is assumed anyway.
bool hasUsualExif(const TiffDirectories& directories, const TiffDirectory& directory) {
    constexpr std::uint32_t srgb = 1;
    if (directory.entries.count(Exif) == 0) {
        return true;
    }
    const std::optional<std::uint32_t> offset = directory.number(Exif, {});
    const std::optional<TiffDirectory> exif = offset ? directories.at(*offset) : std::nullopt;
    return exif && exif->entries.size() == 1 && exif->number(ExifColourSpace, {}) == srgb;
}

}  // namespace

std::optional<IntegerHeader> readTiffHeader(const std::string& path) {
    const FileBytes file(path);
    const TiffDirectories directories(file);
    const std::optional<TiffDirectory> directory = directories.first();
    if (!directory || !hasOnlyUsualTags(*directory) || !isPlain(*directory) || !isStoredAsUsual(*directory) ||
        !hasUsualExif(directories, *directory)) {
        return std::nullopt;
    }
    IntegerHeader header{.width = static_cast<int>(directory->number(Width, {}).value_or(0)),
                         .height = static_cast<int>(directory->number(Height, {}).value_or(0)),
                         .curve = "srgb"};
    return readSamples(*directory, header) ? std::optional(header) : std::nullopt;
}

}  // namespace Corvel
