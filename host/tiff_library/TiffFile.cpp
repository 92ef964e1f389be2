#include <tiffio.h>

#include <algorithm>
#include <memory>

#include "host/images/IntegerFile.h"

namespace Corvel {
namespace {

struct Close {
    void operator()(TIFF* file) const { TIFFClose(file); }
};
using Tiff = std::unique_ptr<TIFF, Close>;

// The library has the file next when something is wrong with it, and gives the reason.
int keepSilent(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

Tiff openTiff(const std::string& path) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepSilent, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepSilent, nullptr);
    return Tiff(TIFFOpenExt(path.c_str(), "r", options.get()));
}

template <typename Value>
Value field(TIFF* file, std::uint32_t tag) {
    Value value{};
    TIFFGetFieldDefaulted(file, tag, &value);
    return value;
}

bool isUsual(TIFF* tiff, const IntegerFile& file) {
    const auto photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC);
    const std::size_t bits = 8 * file.sampleBytes;
    return field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH) == static_cast<std::uint32_t>(file.width) &&
           field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH) == static_cast<std::uint32_t>(file.height) &&
           field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL) == file.channels &&
           field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE) == bits &&
           field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_UINT &&
           field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG &&
           (photometric == PHOTOMETRIC_RGB || photometric == PHOTOMETRIC_MINISBLACK) &&
           TIFFIsTiled(tiff) == 0;
}

bool read(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink) {
    const Tiff tiff = openTiff(file.path);
    if (!tiff || !isUsual(tiff.get(), file)) {
        return false;
    }
    const auto rowBytes = static_cast<tmsize_t>(static_cast<std::size_t>(file.width) *
                                                static_cast<std::size_t>(file.channels) * file.sampleBytes);
    const std::uint32_t stated = field<std::uint32_t>(tiff.get(), TIFFTAG_ROWSPERSTRIP);
    const int rowsOfStrip = static_cast<int>(std::min(stated, static_cast<std::uint32_t>(file.height)));
    if (rowsOfStrip == 0 || TIFFScanlineSize(tiff.get()) != rowBytes) {
        return false;
    }
    const std::size_t stripBytes = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(rowsOfStrip);
    sink.begin(file.sampleBytes == 1 ? SampleForm::Bytes : SampleForm::Words);
    std::uint32_t strip = 0;
    for (int top = 0; top < file.height; top += rowsOfStrip, ++strip) {
        const int rows = std::min(rowsOfStrip, file.height - top);
        // Of some damaged strips libtiff writes less than it says.
        scratch.samples.assign(stripBytes, 0);
        if (TIFFReadEncodedStrip(tiff.get(), strip, scratch.samples.data(), rows * rowBytes) !=
            rows * rowBytes) {
            return false;
        }
        for (int y = 0; y < rows; ++y) {
            sink.place(top + y, scratch.samples.data() + y * rowBytes);
        }
    }
    return true;
}

}  // namespace
}  // namespace Corvel

extern "C" __attribute__((visibility("default"))) bool corvelReadTiff(const Corvel::IntegerFile& file,
                                                                      Corvel::IntegerScratch& scratch,
                                                                      const Corvel::IntegerSink& sink) {
    return Corvel::read(file, scratch, sink);
}
