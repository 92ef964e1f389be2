#include "host/render/Sweep.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "host/render/PrivateFolder.h"
#include "platform/Unheld.h"
#include "quicktime/SharedObjects.h"

namespace Corvel {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// Where the bridge puts its files when nobody gives it a folder.
fs::path bridgeFolder() {
    const char* users = std::getenv("CORVEL_TEMP_DIR");
    return fs::path(users == nullptr ? "/tmp" : users) / "processbridge";
}

void sweepSharedFiles(Names& swept) {
    std::error_code error;
    fs::directory_iterator entry(bridgeFolder(), error);
    for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
        const std::string path = entry->path().string();
        if (!Morvane::QuickTime::bridgeNameOf(path).empty() && Morvane::Platform::isUnheldFile(path) &&
            unlink(path.c_str()) == 0) {
            swept.push_back(path);
        }
    }
}

// The names of bridges' semaphores are a prefix and digits of the bridge's name, 30 characters in all.
bool isBridgeSemaphore(const std::string& name, std::size_t prefixLength) {
    return name.size() == 30 && name.find_first_not_of("0123456789abcdef", prefixLength) == std::string::npos;
}

void sweepSemaphores(const std::string& prefix, Names& swept) {
    for (const std::string& name : Morvane::Platform::unheldSemaphores(prefix)) {
        if (isBridgeSemaphore(name, prefix.size()) && Morvane::Platform::removeSemaphore(name)) {
            swept.push_back("semaphore " + name);
        }
    }
}

}  // namespace

std::vector<std::string> sweepStaleObjects() {
    Names swept = sweepPrivateFolders();
    sweepSharedFiles(swept);
    sweepSemaphores("RDY-", swept);
    sweepSemaphores("DN-Y-", swept);
    return swept;
}

}  // namespace Corvel
