#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/images/IntegerRows.h"

namespace Corvel {

/// The pixels of files that store whole numbers in the usual ways, read without the image library, which
/// takes several times as long. Each function calls `place` for every row, top row first, and returns false
/// where the file is another one than its name says, is not stored in such a way or is damaged: the library,
/// which reads everything and gives reasons, has it then. Rows may have been placed by then.

/// What the file's header said, which must be so.
struct IntegerFile {
    std::string path;
    int width = 0;
    int height = 0;
    int channels = 0;
    std::size_t sampleBytes = 0;  ///< as the image library gives them: 2 for ten bits
    std::string format{};         ///< the library's name for the kind of file: "dpx", "png" or "tiff"
};

/// Memory that is kept from file to file.
struct IntegerScratch {
    std::vector<unsigned char> stored;
    std::vector<unsigned char> samples;
};

/// `begin` is called before the first row, with the form of the samples.
struct IntegerSink {
    std::function<void(SampleForm)> begin;
    std::function<void(int y, const void* row)> place;
};

/// DPX (SMPTE 268M): RGB of 10 bits, filled to 32-bit words by method A, not compressed.
bool readTenBitDpx(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink);

/// PNG (W3C, second edition): grey or RGB, with alpha or without, of 8 or 16 bits, not interlaced. Inflated
/// by libdeflate.
bool readPng(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink);

/// TIFF: grey or RGB with or without alpha, of 8 or 16 bits, in strips, by libtiff's own calls. The library
/// is loaded by the first file; throws std::runtime_error where that fails.
bool readTiff(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink);

/// The one symbol of the shared library that has libtiff: a function of this type.
using TiffLibraryEntry = bool (*)(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink);
constexpr const char* tiffLibraryEntryName = "corvelReadTiff";

}  // namespace Corvel
