#pragma once

// The part of Core Foundation that finding bundles needs. On macOS it is the system's; elsewhere it is this
// subset: the same names, the same results, bundles found from the running executable and the loaded
// plug-ins.

#ifdef __APPLE__
#include <CoreFoundation/CoreFoundation.h>
#else

#include <cstdint>

using Boolean = unsigned char;
using CFIndex = long;
using CFStringEncoding = std::uint32_t;

using CFStringRef = const struct OpaqueCFString*;
using CFURLRef = const struct OpaqueCFURL*;
using CFBundleRef = struct OpaqueCFBundle*;
using CFArrayRef = const struct OpaqueCFArray*;

enum CFURLPathStyle : CFIndex { kCFURLPOSIXPathStyle = 0 };
constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

// Every object that this subset hands out lives until the process ends, also those from "Copy" functions;
// there is nothing to release. All functions may be called from any thread.

/// The string of a constant C string; the same object for the same text.
CFStringRef CFStringMakeConstant(const char* text);
#define CFSTR(text) CFStringMakeConstant(text)

/// The string's bytes, when it can give them without conversion (here: plain ASCII), else null.
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);
/// Copies the string and its NUL to `buffer` of `bufferSize` bytes; false when it does not fit.
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
/// Length in UTF-16 code units.
CFIndex CFStringGetLength(CFStringRef string);
/// The most bytes (without NUL) that `length` UTF-16 code units can take.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/// The first loaded bundle whose Info.plist states this identifier, or null.
CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier);
/// All loaded bundles, as CFBundleRef: the main bundle first, then the plug-ins in the order of loading. The
/// bundle of an executable that lies in no bundle is the executable's own folder.
CFArrayRef CFBundleGetAllBundles();
/// Where the bundle lies; null for a null bundle.
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

#endif
