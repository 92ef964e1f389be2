#pragma once

#include <OpenImageIO/imageio.h>

#include <vector>

#include "host/image_library/OpenPicture.h"
#include "host/images/ImageReader.h"
#include "host/images/IntegerReader.h"

namespace Corvel {

/// The reader for every format of the image library (OpenImageIO): mostly one read call a file, into
/// interleaved scratch memory that is kept, then one pass a row that splits, linearises and premultiplies. Of
/// the usual files of whole numbers the library gives the header only.
class LibraryReader : public ImageReader {
public:
    /// Keeps the image library from starting threads: each frame is read on the thread that asks for it.
    explicit LibraryReader(PictureChoice wanted = {});

    PictureHeader readHeader(const std::string& path) override;
    PictureHeader read(const std::string& path, const Kex::Image::LUT* curve, Picture& picture) override;

private:
    bool readIntegers(const std::string& path, const OpenPicture& open, const Kex::Image::LUT& curve,
                      Picture& picture);
    void readThroughLibrary(const std::string& path, const OpenPicture& open, const Kex::Image::LUT& curve,
                            Picture& picture);

    const PictureChoice choice;
    IntegerReader integers;
    std::vector<float> scratch;  // the file's data window, channels interleaved
};

/// What there is in a file of any format. Throws UnreadableImage.
FileContents readLibraryContents(const std::string& path);

}  // namespace Corvel
