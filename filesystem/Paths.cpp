// The operations of FileSystem.h that look at texts alone.

#include <libgen.h>

#include <algorithm>

#include "filesystem/FileSystem.h"

namespace Morvane::FileSystem {

namespace {

constexpr const char* separators = "\\/:";

void replaceAll(char* text, char from, char to) {
    for (; *text != '\0'; ++text) {
        if (*text == from) {
            *text = to;
        }
    }
}

std::size_t extensionStart(const std::string& path) {
    const std::size_t last = path.find_last_of(std::string(".") + separators);
    const bool isDot = last != std::string::npos && last > 0 && path[last] == '.';
    const bool beginsName = isDot && std::string(separators).find(path[last - 1]) != std::string::npos;
    return isDot && !beginsName ? last : path.size();
}

}  // namespace

std::string baseName(const std::string& path) {
    // The POSIX function, which <libgen.h> selects, may write into its argument.
    std::string copy = path;
    return ::basename(copy.data());
}

std::string directoryName(const std::string& path) {
    std::string copy = path;
    return ::dirname(copy.data());
}

std::string withTrailingSlash(const std::string& path) {
    return path.empty() || path.back() == '/' ? path : path + "/";
}

void splitExtension(const std::string& path, std::string* stem, std::string* extension) {
    const std::size_t start = extensionStart(path);
    const std::string before = path.substr(0, start);
    const std::string after = path.substr(start);
    if (stem != nullptr) {
        *stem = before;
    }
    if (extension != nullptr) {
        *extension = after;
    }
}

void splitDirectory(const std::string& path, std::string* directory, std::string* fileName) {
    const std::size_t last = path.find_last_of(separators);
    const std::size_t start = last == std::string::npos ? path.size() : last + 1;
    const std::string before = path.substr(0, start);
    const std::string after = path.substr(start);
    if (directory != nullptr) {
        *directory = before;
    }
    if (fileName != nullptr) {
        *fileName = after;
    }
}

std::string extensionAfter(const std::string& path, char character) {
    const std::size_t last = path.rfind(character);
    const std::size_t slash = path.rfind('/');
    if (last == std::string::npos || (slash != std::string::npos && last <= slash)) {
        return {};
    }
    const bool hidden = character == '.' && (last == 0 || (last == 1 && path[0] == '.'));
    return hidden ? std::string() : path.substr(last);
}

void toBackslashes(char* text) {
    replaceAll(text, '/', '\\');
}

void toSlashes(char* text) {
    replaceAll(text, '\\', '/');
}

void toBackslashes(std::string& text) {
    std::replace(text.begin(), text.end(), '/', '\\');
}

void toSlashes(std::string& text) {
    std::replace(text.begin(), text.end(), '\\', '/');
}

void reverseInPlace(void* bytes, std::size_t length) {
    auto* first = static_cast<unsigned char*>(bytes);
    std::reverse(first, first + length);
}

}  // namespace Morvane::FileSystem
