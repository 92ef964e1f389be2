#include "host/render/Bundle.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/render/Failure.h"
#include "platform/CoreFoundation.h"
#include "quicktime/Worker.h"

namespace Corvel {
namespace {

std::string text(CFStringRef string) {
    const CFIndex size =
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    const bool done = CFStringGetCString(string, bytes.data(), size, kCFStringEncodingUTF8);
    return done ? bytes.c_str() : "";
}

}  // namespace

Bundle::Bundle() {
    CFBundleRef bundle = CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.host"));
    CFURLRef url = bundle == nullptr ? nullptr : CFBundleCopyBundleURL(bundle);
    CFStringRef place = url == nullptr ? nullptr : CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    path_ = place == nullptr ? "" : text(place);
    if (path_.empty()) {
        throw Failure(Exit::HelperFailed,
                      "this program must run from its Corvel.app, where its plug-ins and its helper are");
    }
}

std::string Bundle::helper() const {
    // The bridge's path begins with "..", which stands for the content folder.
    return contents() + (Morvane::QuickTime::workerPath + 2);
}

void Bundle::checkHelper() const {
    std::error_code error;
    const std::string file = helper();
    if (!std::filesystem::exists(file, error)) {
        throw Failure(Exit::HelperFailed,
                      fmt::format("the QuickTime helper is missing: there is no {}", file));
    }
    if (std::filesystem::is_directory(file, error) || access(file.c_str(), X_OK) != 0) {
        throw Failure(Exit::HelperFailed,
                      fmt::format("the QuickTime helper {} can't be executed: {}", file,
                                  std::filesystem::is_directory(file, error) ? "it is a folder"
                                                                             : std::strerror(errno)));
    }
}

}  // namespace Corvel
