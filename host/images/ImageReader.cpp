#include "host/images/ImageReader.h"

#include "Kex/Image/LUT.h"
#include "host/images/ExrFile.h"
#include "host/images/ExrScanlines.h"
#include "host/images/ExrStatement.h"
#include "host/images/ImageLibrary.h"
#include "host/images/PlacePixels.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// Reads ordinary OpenEXR files by itself, and leaves all others to the image library.
class FileReader : public ImageReader {
public:
    PictureHeader readHeader(const std::string& path) override {
        const ExrFile file(path);
        const std::optional<ExrStatement> statement = file.isOpen() ? stateOf(file) : std::nullopt;
        return statement ? statement->header : general().readHeader(path);
    }

    PictureHeader read(const std::string& path, const LUT* curve, Picture& picture) override {
        const ExrFile file(path);
        const std::optional<ExrStatement> statement = file.isOpen() ? stateOf(file) : std::nullopt;
        return statement && readOrdinary(file, *statement, curve, picture)
                   ? statement->header
                   : general().read(path, curve, picture);
    }

private:
    bool readOrdinary(const ExrFile& file, const ExrStatement& statement, const LUT* curve,
                      Picture& picture) {
        const PictureHeader& header = statement.header;
        prepareFor(header, picture);
        if (!scanlines.read(file, statement.channels, header.display, picture)) {
            return false;
        }
        linearise(header, *(curve ? curve : LUT::find(header.curve)), picture);
        return true;
    }

    ImageReader& general() {
        if (!library) {
            library = imageLibrary().createReader();
        }
        return *library;
    }

    ExrScanlines scanlines;
    std::unique_ptr<ImageReader> library;
};

}  // namespace

std::unique_ptr<ImageReader> createImageReader() {
    return std::make_unique<FileReader>();
}

std::string readableFormats() {
    return imageLibrary().readableFormats();
}

}  // namespace Corvel
