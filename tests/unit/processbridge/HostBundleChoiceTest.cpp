// Which of several bundles is taken for the host's: the choice alone, among bundles that lie where no test
// could put them. The Core Foundation calls are answered from a list here.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/CoreFoundation.h"
#include "processbridge/HostBundle.h"

namespace {

/// What the system would know: paths of all bundles, and the one with the host's identifier (null for none).
struct System {
    std::vector<std::string> all;
    const std::string* identified = nullptr;
};

System& fake() {
    static System system;
    return system;
}

/// Bundles, their URLs and their paths are all the same text here.
const std::string& textOf(const void* object) {
    return *static_cast<const std::string*>(object);
}

template <typename Reference>
Reference referenceTo(const void* object) {
    return static_cast<Reference>(const_cast<void*>(object));
}

}  // namespace

CFStringRef CFStringMakeConstant(const char*) {
    return nullptr;
}
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding) {
    return textOf(string).c_str();
}
Boolean CFStringGetCString(CFStringRef, char*, CFIndex, CFStringEncoding) {
    return 0;
}
CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>(textOf(string).size());
}
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) {
    return length;
}
CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef) {
    return referenceTo<CFBundleRef>(fake().identified);
}
CFArrayRef CFBundleGetAllBundles() {
    return nullptr;
}
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) {
    return referenceTo<CFURLRef>(bundle);
}
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
    return referenceTo<CFStringRef>(url);
}
CFIndex CFArrayGetCount(CFArrayRef) {
    return static_cast<CFIndex>(fake().all.size());
}
const void* CFArrayGetValueAtIndex(CFArrayRef, CFIndex index) {
    return &fake().all[static_cast<std::size_t>(index)];
}

namespace {

class HostBundleChoice : public testing::Test {
protected:
    ~HostBundleChoice() override { fake() = {}; }

    static std::string choose() { return Morvane::ProcessBridge::hostBundleContentsPath(); }
};

TEST_F(HostBundleChoice, DropsTheSystemsOwnBundles) {
    fake().all = {"/System/Library/Frameworks/A.framework", "/Library/Audio/B.bundle", "/", "",
                  "/Applications/Host.app"};

    EXPECT_EQ(choose(), "/Applications/Host.app/Contents");
}

TEST_F(HostBundleChoice, KeepsBundlesWhoseFoldersOnlyBeginAlike) {
    for (const char* path :
         {"/Systems/Host.app", "/Volumes/a/Library/Host.app", "/System", "/Library", "//"}) {
        fake().all = {"/System/a", path, "/Library/b"};

        EXPECT_EQ(choose(), std::string(path) + "/Contents");
    }
}

TEST_F(HostBundleChoice, TakesTheIdentifiedBundleWhereverItLies) {
    const std::string host = "/Library/Host.app";
    fake() = {{"/Applications/Other.app", "/Applications/Another.app"}, &host};

    EXPECT_EQ(choose(), "/Library/Host.app/Contents");
}

TEST_F(HostBundleChoice, LooksFurtherWhenTheIdentifiedBundleIsTheRoot) {
    const std::string root = "/";
    fake() = {{"/Applications/Host.app", "/"}, &root};

    EXPECT_EQ(choose(), "/Applications/Host.app/Contents");
}

TEST_F(HostBundleChoice, ListsTheCandidatesInOrderAndEndsTheProcessWithoutExactlyOne) {
    fake().all = {"/b.app", "/System/x", "/a.app"};
    EXPECT_DEATH(choose(), "Don't know our bundle, possibilities:\n/b.app\n/a.app\n$");

    fake().all = {"/System/x"};
    EXPECT_DEATH(choose(), "Don't know our bundle, possibilities:\n$");
}

}  // namespace
