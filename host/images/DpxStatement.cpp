#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "host/images/DpxHeader.h"
#include "host/images/IntegerHeader.h"
#include "host/images/PackedTimecode.h"
#include "host/images/StatedValues.h"

namespace Corvel {
namespace {

bool isWhole(const DpxHeader& header, DpxHeader::Field field, std::uint64_t number) {
    return header.numberOr(field, 4, number) == number;
}

// One upright picture of square pixels, of which all is shown.
bool isPlain(const DpxHeader& header) {
    return header.number(DpxHeader::Orientation, 2) == 0 && isWhole(header, DpxHeader::OffsetX, 0) &&
           isWhole(header, DpxHeader::OffsetY, 0) &&
           isWhole(header, DpxHeader::OriginalWidth, header.number(DpxHeader::PixelsPerLine, 4)) &&
           isWhole(header, DpxHeader::OriginalHeight, header.number(DpxHeader::LinesPerElement, 4)) &&
           header.number(DpxHeader::AspectX, 4) == header.number(DpxHeader::AspectY, 4);
}

// By the transfer characteristic, SMPTE 268M table 5A. False for the others, and for an exponent.
bool readTransfer(const DpxHeader& header, IntegerHeader& read) {
    enum { UserDefined, PrintingDensity, Linear, Logarithmic, Video, Smpte274, Rec709, Undefined = 255 };
    const float gamma = header.real(DpxHeader::Gamma);
    switch (header.number(DpxHeader::Transfer, 1)) {
        case UserDefined:
            read.curve = "srgb";
            return std::isnan(gamma) || gamma == 0;
        case PrintingDensity:
            read.curve = "cineon";
            return true;
        case Linear:
            read.curve = "linear";
            return true;
        case Logarithmic:
            read.curve = "cineon";
            read.colourSpace = "KodakLog";
            return true;
        case Smpte274:
            read.curve = "rec709";
            return true;
        case Rec709:
            read.curve = "rec709";
            read.colourSpace = "Rec709";
            return true;
        case Video:
        case Undefined:
            read.curve = "srgb";
            return true;
        default:
            return false;
    }
}

Metadata metadataOf(const DpxHeader& header) {
    Metadata metadata{{"quicktime/reel", header.text(DpxHeader::InputDevice, 32)}};
    if (header.hasIndustryPart()) {
        const std::string film = rateText(header.real(DpxHeader::FilmRate));
        const std::string rate = film.empty() ? rateText(header.real(DpxHeader::TelevisionRate)) : film;
        const auto timecode = static_cast<std::uint32_t>(header.number(DpxHeader::TimeCode, 4));
        metadata["input/frame_rate"] = rate;
        metadata["input/timecode"] = unpackTimecode(timecode, std::strtod(rate.c_str(), nullptr));
    }
    std::erase_if(metadata, [](const auto& entry) { return entry.second.empty(); });
    return metadata;
}

}  // namespace

std::optional<IntegerHeader> readDpxHeader(const std::string& path) {
    const DpxHeader header(path);
    if (!header.isDpx() || !header.isWhole() || !header.isTenBitRgb() || !isPlain(header)) {
        return std::nullopt;
    }
    IntegerHeader read{.width = static_cast<int>(header.number(DpxHeader::PixelsPerLine, 4)),
                       .height = static_cast<int>(header.number(DpxHeader::LinesPerElement, 4)),
                       .channels = 3,
                       .bits = 10};
    if (!readTransfer(header, read)) {
        return std::nullopt;
    }
    read.metadata = metadataOf(header);
    return read;
}

}  // namespace Corvel
