#include "host/images/ImageReader.h"

#include <fmt/format.h>

#include "Kex/Image/LUT.h"
#include "host/images/CodeTables.h"
#include "host/images/ExrContents.h"
#include "host/images/ExrFile.h"
#include "host/images/ExrScanlines.h"
#include "host/images/ExrStatement.h"
#include "host/images/ImageLibrary.h"
#include "host/images/IntegerReader.h"
#include "host/images/IntegerStatement.h"
#include "host/images/PlacePixels.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// Reads ordinary OpenEXR files and files of whole numbers by itself, and leaves all others to the image
// library.
class FileReader : public ImageReader {
public:
    explicit FileReader(PictureChoice wanted) : choice(std::move(wanted)) {}

    PictureHeader readHeader(const std::string& path) override {
        if (const auto stated = stateOfIntegers(path, choice)) {
            return stated->header;
        }
        const ExrFile file(path);
        const std::optional<ExrStatement> statement = statementOf(file);
        return statement ? statement->header : general().readHeader(path);
    }

    PictureHeader read(const std::string& path, const LUT* curve, Picture& picture) override {
        const auto stated = stateOfIntegers(path, choice);
        if (stated && readIntegers(*stated, curve, picture)) {
            return stated->header;
        }
        const ExrFile file(path);
        const std::optional<ExrStatement> statement = statementOf(file);
        return statement && readOrdinary(file, *statement, curve, picture)
                   ? statement->header
                   : general().read(path, curve, picture);
    }

private:
    bool readIntegers(const IntegerStatement& statement, const LUT* curve, Picture& picture) {
        const PictureHeader& header = statement.header;
        const IntegerPixels pixels{.channels = statement.file.channels,
                                   .layout = statement.layout,
                                   .straightAlpha = statement.straightAlpha,
                                   .window = header.data};
        return integers.read(statement.file, pixels, *(curve ? curve : LUT::find(header.curve)),
                             header.display, picture);
    }

    std::optional<ExrStatement> statementOf(const ExrFile& file) const {
        if (!file.isOpen()) {
            return std::nullopt;
        }
        const FileContents contents = contentsOf(file);
        return stateOf(file, contents, chooseFrom(file.path(), contents, choice));
    }

    bool readOrdinary(const ExrFile& file, const ExrStatement& statement, const LUT* curve,
                      Picture& picture) {
        const PictureHeader& header = statement.header;
        const LUT& meaning = *(curve ? curve : LUT::find(header.curve));
        const bool onlyHalves = header.floatingPoint && header.bits == 16;
        if (onlyHalves && meaning.type() == 0 && picture.allowsCodes()) {
            prepareCodesFor(header, halfFloats(), picture);
        } else {
            prepareFor(header, picture);
        }
        if (!scanlines.read(file, statement.part, statement.channels, header.display, picture)) {
            return false;
        }
        linearise(header, meaning, picture);
        return true;
    }

    ImageReader& general() {
        if (!library) {
            library = imageLibrary().createReader(choice);
        }
        return *library;
    }

    const PictureChoice choice;
    IntegerReader integers;
    ExrScanlines scanlines;
    std::unique_ptr<ImageReader> library;
};

}  // namespace

ChosenPicture chooseFrom(const std::string& path, const FileContents& contents, const PictureChoice& choice) {
    try {
        return choosePicture(contents, choice);
    } catch (const BadPictureChoice& reason) {
        throw UnreadableImage(fmt::format("cannot read {}: {}", path, reason.what()));
    }
}

Metadata attributesOf(const PictureHeader& header) {
    return header.attributesIn.empty()
               ? header.attributes
               : imageLibrary().createReader({})->readHeader(header.attributesIn).attributes;
}

std::unique_ptr<ImageReader> createImageReader(const PictureChoice& choice) {
    return std::make_unique<FileReader>(choice);
}

std::string readableFormats() {
    return imageLibrary().readableFormats();
}

}  // namespace Corvel
