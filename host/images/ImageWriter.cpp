#include "host/images/ImageWriter.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "host/images/ImageLibrary.h"
#include "host/images/NameMatch.h"

namespace Corvel {

const char* writableImageEndings() {
    return ".exr, .dpx, .png, .tif";
}

bool isWritableImageName(const std::string& path) {
    constexpr std::array endings{".exr", ".dpx", ".png", ".tif", ".tiff"};
    const std::string ending = lowered(std::filesystem::path(path).extension().string());
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

void writeImage(const std::string& path, const Picture& picture, const PictureHeader& header,
                ImageValues values) {
    imageLibrary().writeImage(path, picture, header, values);
}

}  // namespace Corvel
