#pragma once

#include <memory>
#include <string>

#include "host/images/ImageReader.h"
#include "host/images/ImageWriter.h"

namespace Corvel {

/// The general image library: many formats, read and written. It brings some 250 shared libraries along,
/// which take a fifth of a second to load; so it is a shared library of its own that is loaded when the first
/// file needs it. Ordinary OpenEXR files never do.
class ImageLibrary {
public:
    virtual ~ImageLibrary() = default;

    virtual std::unique_ptr<ImageReader> createReader(const PictureChoice& choice) const = 0;
    /// As readContents (ReadContents.h), of any format.
    virtual FileContents contents(const std::string& path) const = 0;
    /// Whether files with that ending, in lower case without its dot, are pictures of a format that it reads.
    virtual bool knowsEnding(const std::string& ending) const = 0;
    /// As the functions of the same names in ImageReader.h and ImageWriter.h.
    virtual std::string readableFormats() const = 0;
    virtual void writeImage(const std::string& path, const Picture& picture, const PictureHeader& header,
                            ImageValues values) const = 0;
};

/// Loads it at the first call and keeps it until the process ends. Any thread. Throws std::runtime_error with
/// the loader's reason.
const ImageLibrary& imageLibrary();

/// The one symbol of the shared library: a function of type ImageLibraryEntry.
using ImageLibraryEntry = const ImageLibrary* (*)();
constexpr const char* imageLibraryEntryName = "corvelImageLibrary";

}  // namespace Corvel
