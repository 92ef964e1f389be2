#include "platform/CoreFoundation.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/Bundles.h"

struct OpaqueCFString {
    std::string text;
};

struct OpaqueCFURL {
    OpaqueCFString path;
};

struct OpaqueCFBundle {
    OpaqueCFURL url;
};

struct OpaqueCFArray {
    std::vector<const void*> values;
};

namespace {

/// Every object handed out, each once for the same content: they stay valid until the process ends (or this
/// copy of the library is unloaded).
struct Objects {
    std::mutex mutex;
    std::map<std::string, OpaqueCFString> strings;
    std::map<std::string, OpaqueCFBundle> bundles;
    std::deque<OpaqueCFArray> arrays;
};

Objects& objects() {
    static Objects all;
    return all;
}

CFBundleRef bundleAt(const std::string& path) {
    const std::lock_guard lock(objects().mutex);
    return &objects().bundles.try_emplace(path, OpaqueCFBundle{{{path}}}).first->second;
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char byte) { return byte < 0x80; });
}

/// How many UTF-16 code units the UTF-8 sequence that `lead` begins takes, and of how many bytes it is.
struct Sequence {
    std::size_t bytes;
    CFIndex units;
};

Sequence sequenceOf(unsigned char lead) {
    if (lead >= 0xF0) {
        return {4, 2};
    }
    if (lead >= 0xE0) {
        return {3, 1};
    }
    return {lead >= 0xC0 ? std::size_t{2} : std::size_t{1}, 1};
}

}  // namespace

CFStringRef CFStringMakeConstant(const char* text) {
    const std::lock_guard lock(objects().mutex);
    return &objects().strings.try_emplace(text, OpaqueCFString{text}).first->second;
}

const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding) {
    return isAscii(string->text) ? string->text.c_str() : nullptr;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding) {
    const std::size_t needed = string->text.size() + 1;
    if (bufferSize < 0 || static_cast<std::size_t>(bufferSize) < needed) {
        return false;
    }
    std::memcpy(buffer, string->text.c_str(), needed);
    return true;
}

CFIndex CFStringGetLength(CFStringRef string) {
    const std::string& text = string->text;
    CFIndex units = 0;
    for (std::size_t position = 0; position < text.size();) {
        const Sequence sequence = sequenceOf(static_cast<unsigned char>(text[position]));
        units += sequence.units;
        position += sequence.bytes;
    }
    return units;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) {
    return 3 * length;
}

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier) {
    for (const Morvane::Platform::Bundle& bundle : Morvane::Platform::loadedBundles()) {
        if (bundle.identifier == identifier->text) {
            return bundleAt(bundle.path);
        }
    }
    return nullptr;
}

CFArrayRef CFBundleGetAllBundles() {
    OpaqueCFArray array;
    for (const Morvane::Platform::Bundle& bundle : Morvane::Platform::loadedBundles()) {
        array.values.push_back(bundleAt(bundle.path));
    }
    const std::lock_guard lock(objects().mutex);
    std::deque<OpaqueCFArray>& arrays = objects().arrays;
    const auto same = std::find_if(arrays.begin(), arrays.end(),
                                   [&](const OpaqueCFArray& known) { return known.values == array.values; });
    return same != arrays.end() ? &*same : &arrays.emplace_back(std::move(array));
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) {
    return bundle == nullptr ? nullptr : &bundle->url;
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
    return url == nullptr ? nullptr : &url->path;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(array->values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return array->values[static_cast<std::size_t>(index)];
}
