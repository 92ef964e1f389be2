#include "host/images/ImageWriter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

#include "host/images/ImageLibrary.h"

namespace Corvel {

const char* writableImageEndings() {
    return ".exr, .dpx, .png, .tif";
}

bool isWritableImageName(const std::string& path) {
    constexpr std::array endings{".exr", ".dpx", ".png", ".tif", ".tiff"};
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

void writeImage(const std::string& path, const Picture& picture, const PictureHeader& header,
                ImageValues values) {
    imageLibrary().writeImage(path, picture, header, values);
}

}  // namespace Corvel
