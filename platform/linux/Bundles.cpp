#include "platform/linux/Bundles.h"

#include <link.h>
#include <plist/plist.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace Morvane::Platform {

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};

std::string parentFolder(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string lastComponent(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// "…/X.app" for "…/X.app/Contents/MacOS/x"; empty for a file that lies otherwise.
std::string enclosingBundle(const std::string& file) {
    const std::string folder = parentFolder(file);
    const std::string contents = parentFolder(folder);
    const bool isBundle = lastComponent(folder) == "MacOS" && lastComponent(contents) == "Contents";
    return isBundle ? parentFolder(contents) : std::string();
}

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string executablePath() {
    char buffer[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
    return length < 0 ? std::string() : std::string(buffer, static_cast<std::size_t>(length));
}

int collectLibrary(dl_phdr_info* library, std::size_t, void* folders) {
    const std::unique_ptr<char, decltype(&std::free)> file(realpath(library->dlpi_name, nullptr), &std::free);
    if (file != nullptr) {
        static_cast<std::vector<std::string>*>(folders)->push_back(enclosingBundle(file.get()));
    }
    return 0;
}

}  // namespace

std::string identifierInPlist(const std::string& text) {
    plist_t parsed = nullptr;
    plist_from_memory(text.data(), static_cast<std::uint32_t>(text.size()), &parsed);
    const std::unique_ptr<void, PlistDeleter> list(parsed);
    if (parsed == nullptr || plist_get_node_type(parsed) != PLIST_DICT) {
        return {};
    }
    plist_t item = plist_dict_get_item(parsed, "CFBundleIdentifier");
    if (item == nullptr || plist_get_node_type(item) != PLIST_STRING) {
        return {};
    }
    std::uint64_t length = 0;
    const char* identifier = plist_get_string_ptr(item, &length);
    return {identifier, length};
}

std::vector<Bundle> loadedBundles() {
    const std::string executable = executablePath();
    const std::string mainBundle = enclosingBundle(executable);
    std::vector<std::string> folders{mainBundle.empty() ? parentFolder(executable) : mainBundle};
    dl_iterate_phdr(collectLibrary, &folders);

    std::vector<Bundle> bundles;
    for (const std::string& folder : folders) {
        const bool known = std::any_of(bundles.begin(), bundles.end(),
                                       [&](const Bundle& bundle) { return bundle.path == folder; });
        if (!folder.empty() && !known) {
            bundles.push_back({folder, identifierInPlist(readText(folder + "/Contents/Info.plist"))});
        }
    }
    return bundles;
}

}  // namespace Morvane::Platform
