#pragma once

#include <OpenImageIO/imageio.h>

#include <vector>

#include "host/images/ImageReader.h"

namespace Corvel {

/// The reader for every format of the image library (OpenImageIO): mostly one read call a file, into
/// interleaved scratch memory that is kept, then one pass a row that splits, linearises and premultiplies.
class LibraryReader : public ImageReader {
public:
    /// Keeps the image library from starting threads: each frame is read on the thread that asks for it.
    explicit LibraryReader(PictureChoice wanted = {});

    PictureHeader readHeader(const std::string& path) override;
    PictureHeader read(const std::string& path, const Kex::Image::LUT* curve, Picture& picture) override;

private:
    const PictureChoice choice;
    std::vector<float> scratch;  // the file's data window, channels interleaved
};

/// What there is in a file of any format. Throws UnreadableImage.
FileContents readLibraryContents(const std::string& path);

}  // namespace Corvel
