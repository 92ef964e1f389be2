#include <OpenImageIO/imageio.h>

#include <algorithm>

#include "host/image_library/LibraryReader.h"
#include "host/image_library/LibraryWriter.h"
#include "host/images/ImageLibrary.h"

namespace Corvel {
namespace {

class OpenImageLibrary : public ImageLibrary {
public:
    std::unique_ptr<ImageReader> createReader(const PictureChoice& choice) const override {
        return std::make_unique<LibraryReader>(choice);
    }

    std::string readableFormats() const override {
        std::string names;
        for (const char character : OIIO::get_string_attribute("input_format_list")) {
            names += character;
            names += character == ',' ? " " : "";
        }
        return names;
    }

    FileContents contents(const std::string& path) const override { return readLibraryContents(path); }

    bool knowsEnding(const std::string& ending) const override {
        for (const auto& [format, endings] : OIIO::get_extension_map()) {
            // That one is for movies.
            if (format != "ffmpeg" && std::find(endings.begin(), endings.end(), ending) != endings.end()) {
                return true;
            }
        }
        return false;
    }

    void writeImage(const std::string& path, const Picture& picture, const PictureHeader& header,
                    ImageValues values) const override {
        writeThroughLibrary(path, picture, header, values);
    }
};

}  // namespace
}  // namespace Corvel

extern "C" __attribute__((visibility("default"))) const Corvel::ImageLibrary* corvelImageLibrary() {
    static const Corvel::OpenImageLibrary library;
    return &library;
}
