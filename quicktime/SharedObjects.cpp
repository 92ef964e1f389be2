#include "quicktime/SharedObjects.h"

#include <semaphore.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "processbridge/ResourceNames.h"

namespace Morvane::QuickTime {

namespace {

constexpr std::size_t bridgeNameLength = 32;
constexpr std::size_t longestSemaphoreName = 30;

bool isHexadecimal(char character) {
    return std::isxdigit(static_cast<unsigned char>(character)) != 0;
}

}  // namespace

std::string bridgeNameOf(const std::string& path) {
    const std::string folder = "/processbridge/";
    const std::size_t place = path.rfind(folder);
    if (place == std::string::npos)
        return "";
    std::string name = path.substr(place + folder.size());
    if (name.size() == bridgeNameLength + 1 && name.back() == 'T')
        name.pop_back();
    const bool isName =
        name.size() == bridgeNameLength && std::all_of(name.begin(), name.end(), isHexadecimal);
    return isName ? name : "";
}

void removeSharedObjects(const std::string& path) {
    const std::string bridgeName = bridgeNameOf(path);
    if (bridgeName.empty())
        return;
    const ProcessBridge::ResourceNames names(bridgeName);
    unlink(path.c_str());
    sem_unlink(names.readySemaphore.substr(0, longestSemaphoreName).c_str());
    sem_unlink(names.doneSemaphore.substr(0, longestSemaphoreName).c_str());
}

}  // namespace Morvane::QuickTime
