#include "processbridge/HostBundle.h"

#include <cstdlib>
#include <iostream>
#include <vector>

#include "platform/CoreFoundation.h"

namespace Morvane::ProcessBridge {

namespace {

std::string utf8(CFStringRef string) {
    if (const char* direct = CFStringGetCStringPtr(string, kCFStringEncodingUTF8)) {
        return direct;
    }
    const CFIndex size =
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::string text(static_cast<std::size_t>(size), '\0');
    if (!CFStringGetCString(string, text.data(), size, kCFStringEncodingUTF8)) {
        return {};
    }
    return text.c_str();
}

/// Empty without a bundle or where the bundle has no path. Nothing of what is copied here is released.
std::string pathOf(CFBundleRef bundle) {
    CFURLRef url = bundle == nullptr ? nullptr : CFBundleCopyBundleURL(bundle);
    CFStringRef path = url == nullptr ? nullptr : CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    return path == nullptr ? std::string() : utf8(path);
}

bool beginsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool isCandidate(const std::string& path) {
    return !beginsWith(path, "/System/") && !beginsWith(path, "/Library/") && path != "/" && !path.empty();
}

std::vector<std::string> candidates() {
    std::vector<std::string> paths;
    CFArrayRef bundles = CFBundleGetAllBundles();
    for (CFIndex index = 0; index < CFArrayGetCount(bundles); ++index) {
        const void* bundle = CFArrayGetValueAtIndex(bundles, index);
        const std::string path = pathOf(static_cast<CFBundleRef>(const_cast<void*>(bundle)));
        if (isCandidate(path)) {
            paths.push_back(path);
        }
    }
    return paths;
}

std::string onlyCandidate() {
    const std::vector<std::string> paths = candidates();
    if (paths.size() != 1) {
        std::cerr << "Don't know our bundle, possibilities:" << std::endl;
        for (const std::string& path : paths) {
            std::cerr << path << std::endl;
        }
        std::abort();
    }
    return paths.front();
}

}  // namespace

std::string hostBundleContentsPath() {
    const std::string path = pathOf(CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.host")));
    const bool found = !path.empty() && path != "/";
    return (found ? path : onlyCandidate()) + "/Contents";
}

}  // namespace Morvane::ProcessBridge
