#include "host/images/StereoName.h"

#include <filesystem>

namespace Corvel {

std::string withView(const std::string& path, const std::string& view) {
    std::string resolved;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char next = path[i] == '%' && i + 1 < path.size() ? path[i + 1] : '\0';
        if (next == 'V' || next == 'v') {
            resolved += next == 'V' ? view : view.substr(0, 1);
            ++i;
        } else if (next == '%') {
            resolved += "%%";
            ++i;
        } else {
            resolved += path[i];
        }
    }
    return resolved;
}

bool hasViewMark(const std::string& path) {
    return withView(path, "x") != path;
}

std::string pathOfView(const std::string& path, const PictureChoice& choice) {
    std::error_code error;
    if (!hasViewMark(path) || std::filesystem::exists(path, error)) {
        return path;
    }
    return withView(path, choice.view.empty() ? usualView : choice.view);
}

}  // namespace Corvel
