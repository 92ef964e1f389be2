#include "worker/read/RowReader.h"

#include <bit>
#include <cstring>

namespace Morvane::Worker {

namespace {

constexpr bool machineIsBigEndian = std::endian::native == std::endian::big;

/// A palette's entry is one 32-bit word, A, R, G, B from its highest byte: how far each component lies from
/// the lowest.
constexpr int paletteShift[] = {16, 8, 0, 24};

}  // namespace

RowReader::RowReader(const AVFrame& source)
    : frame(source), format(*av_pix_fmt_desc_get(static_cast<AVPixelFormat>(source.format))), bytes(2) {
    bool plainBytes = true;
    for (int component = 0; component < format.nb_components; ++component)
        plainBytes = plainBytes && hasPlainLayout(component) && format.comp[component].depth == 8;
    if (isFloat())
        bytes = 4;
    else if (plainBytes)
        bytes = 1;
}

bool RowReader::isReadable(const AVFrame& frame) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr unsigned strange = AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    return format != nullptr && (format->flags & strange) == 0 && format->nb_components > 0;
}

bool RowReader::isFloat() const {
    return (format.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
}

bool RowReader::hasPalette() const {
    return (format.flags & AV_PIX_FMT_FLAG_PAL) != 0;
}

int RowReader::components() const {
    return hasPalette() ? 4 : format.nb_components;
}

int RowReader::depth(int component) const {
    return hasPalette() ? 8 : format.comp[component].depth;
}

/// Whether samples lie one after the other, each a number of its own; it may still be of fewer bytes than the
/// others.
bool RowReader::hasPlainLayout(int component) const {
    const AVComponentDescriptor& layout = format.comp[component];
    if ((format.flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM)) != 0 || layout.shift != 0 ||
        layout.offset != 0)
        return false;
    const bool swapped = ((format.flags & AV_PIX_FMT_FLAG_BE) != 0) != machineIsBigEndian;
    return layout.depth <= 8 ? layout.step == 1 : layout.step == (layout.depth <= 16 ? 2 : 4) && !swapped;
}

bool RowReader::isPlain(int component) const {
    return hasPlainLayout(component) && (bytes > 1) == (format.comp[component].depth > 8);
}

const void* RowReader::plainRow(int component, int y) const {
    const int plane = format.comp[component].plane;
    return frame.data[plane] + static_cast<std::ptrdiff_t>(y) * frame.linesize[plane];
}

void RowReader::read(int component, int y, int count, void* row) const {
    if (hasPalette())
        return readThroughPalette(component, y, count, static_cast<std::uint16_t*>(row));
    if (isPlain(component)) {
        std::memcpy(row, plainRow(component, y), static_cast<std::size_t>(count) * bytes);
        return;
    }
    const std::uint8_t* planes[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
    av_read_image_line2(row, planes, frame.linesize, &format, 0, y, component, count, 0,
                        static_cast<int>(bytes));
}

void RowReader::readThroughPalette(int component, int y, int count, std::uint16_t* row) const {
    const std::uint8_t* indices = frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
    const auto* palette = reinterpret_cast<const std::uint32_t*>(frame.data[1]);
    for (int x = 0; x < count; ++x)
        row[x] = static_cast<std::uint16_t>(palette[indices[x]] >> paletteShift[component] & 0xff);
}

}  // namespace Morvane::Worker
