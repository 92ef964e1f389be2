#pragma once

#include <OpenImageIO/imageio.h>

#include <vector>

#include "host/images/ExrScanlines.h"
#include "host/images/ImageReader.h"

namespace Corvel {

struct ChannelLayout;

/// The reader for every format of the image library (OpenImageIO). One read call a file, into interleaved
/// scratch memory that is kept, then one pass a row that splits, linearises and premultiplies. Of OpenEXR
/// files whose layout is ordinary but whose channels or windows need a closer look the library reads the
/// header only; their pixels are decoded by ExrScanlines, in a third of the time.
class LibraryReader : public ImageReader {
public:
    /// Keeps the image library from starting threads: each frame is read on the thread that asks for it.
    LibraryReader();

    PictureHeader readHeader(const std::string& path) override;
    PictureHeader read(const std::string& path, const Kex::Image::LUT* curve, Picture& picture) override;

private:
    void readThroughLibrary(const std::string& path, OIIO::ImageInput& input, const ChannelLayout& layout,
                            const Kex::Image::LUT& curve, const PictureHeader& header, Picture& picture);

    ExrScanlines scanlines;
    std::vector<float> scratch;  // the file's data window, channels interleaved
};

}  // namespace Corvel
