#include "host/images/ReadContents.h"

#include <filesystem>

#include "host/images/ExrContents.h"
#include "host/images/ExrFile.h"
#include "host/images/ImageLibrary.h"
#include "host/images/NameMatch.h"

namespace Corvel {

FileContents readContents(const std::string& path) {
    const ExrFile file(path);
    return file.isOpen() ? contentsOf(file) : imageLibrary().contents(path);
}

bool isPictureName(const std::string& path) {
    const std::string ending = lowered(std::filesystem::path(path).extension().string());
    return ending == ".exr" || (ending.size() > 1 && imageLibrary().knowsEnding(ending.substr(1)));
}

}  // namespace Corvel
