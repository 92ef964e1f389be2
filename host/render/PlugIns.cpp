#include "host/render/PlugIns.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>

#include "filesystem/FileSystem.h"

namespace Corvel {

std::vector<PlugIn> loadPlugIns(const std::string& contents) {
    namespace fs = std::filesystem;
    std::vector<fs::path> bundles;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(contents) / "PlugIns", error)) {
        if (entry.path().extension() == ".bundle") {
            bundles.push_back(entry.path());
        }
    }
    std::sort(bundles.begin(), bundles.end());

    std::vector<PlugIn> plugIns;
    for (const fs::path& bundle : bundles) {
        PlugIn plugIn{bundle.string(), ""};
        const fs::path code = bundle / "Contents" / "MacOS" / bundle.stem();
        if (Morvane::FileSystem::openLibrary(code.string()) == nullptr) {
            plugIn.failure = dlerror();
        }
        plugIns.push_back(plugIn);
    }
    return plugIns;
}

}  // namespace Corvel
