#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "host/images/Picture.h"
#include "host/images/PictureChoice.h"
#include "host/images/PictureHeader.h"

namespace Kex::Image {
class LUT;
}

namespace Corvel {

/// A file that cannot be read. `what()` names the file and gives the reason, in one line.
class UnreadableImage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads single image files into pictures that are ready to be written: linear light, premultiplied, the size
/// of the display window, transparent black where the file has no pixels, cropped where it has more.
///
/// A reader keeps scratch memory between files and is used by one thread; each reading thread has its own. It
/// starts no threads itself. Of a file with several pictures it reads the one that was chosen, at full
/// resolution.
class ImageReader {
public:
    virtual ~ImageReader() = default;

    /// Reads what the file says without decoding pixels. Throws UnreadableImage.
    virtual PictureHeader readHeader(const std::string& path) = 0;

    /// Reads the file into `picture`, which gets the size of the display window and 3 or 4 channels as the
    /// file has alpha or not, the file's own codes where it allows them and each of them has one meaning, and
    /// returns its header. `curve` says what the stored values mean, whatever the file says; null for the
    /// file's own statement or, without one, its format's (float and half: linear, integers: sRGB). Throws
    /// UnreadableImage, also for a file that is cut short; the picture's samples are arbitrary then.
    virtual PictureHeader read(const std::string& path, const Kex::Image::LUT* curve, Picture& picture) = 0;
};

/// The reader for any file that the image library knows, with the fast paths for ordinary OpenEXR, DPX, PNG
/// and TIFF files in front of it.
/// A choice that a file does not have makes it unreadable; the reason says what it has.
std::unique_ptr<ImageReader> createImageReader(const PictureChoice& choice = {});

/// The texts and numbers of a file's header, of which `header` is: `header.attributes`, else read from the
/// file now. Throws UnreadableImage, and std::runtime_error where the image library cannot be loaded.
Metadata attributesOf(const PictureHeader& header);

/// As choosePicture, for the file at `path`, which UnreadableImage names.
ChosenPicture chooseFrom(const std::string& path, const FileContents& contents, const PictureChoice& choice);

/// The names of the formats that it reads, separated by ", ", for people.
std::string readableFormats();

}  // namespace Corvel
