#include "platform/CoreFoundation.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Path = std::filesystem::path;

std::string pathOf(CFBundleRef bundle) {
    return CFStringGetCStringPtr(CFURLCopyFileSystemPath(CFBundleCopyBundleURL(bundle), kCFURLPOSIXPathStyle),
                                 kCFStringEncodingUTF8);
}

std::vector<std::string> allBundles() {
    std::vector<std::string> paths;
    CFArrayRef bundles = CFBundleGetAllBundles();
    for (CFIndex index = 0; index < CFArrayGetCount(bundles); ++index) {
        paths.push_back(
            pathOf(static_cast<CFBundleRef>(const_cast<void*>(CFArrayGetValueAtIndex(bundles, index)))));
    }
    return paths;
}

std::string ownFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

/// A plug-in bundle on disk that is loaded while the object lives.
class LoadedPlugin {
public:
    LoadedPlugin(const std::string& name, const std::string& infoPlist)
        : bundle(Path(SCRATCH_FOLDER) / name) {
        remove_all(bundle);
        create_directories(bundle / "Contents" / "MacOS");
        std::ofstream(bundle / "Contents" / "Info.plist") << infoPlist;
        const Path file = bundle / "Contents" / "MacOS" / "plugin";
        copy_file(SAMPLE_PLUGIN, file);
        handle = dlopen(file.c_str(), RTLD_NOW);
    }
    ~LoadedPlugin() {
        dlclose(handle);
        remove_all(bundle);
    }

    const Path bundle;
    void* handle;
};

std::string plistWithIdentifier(const std::string& identifier) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict><key>CFBundleIdentifier</key><string>)" +
           identifier + "</string></dict></plist>";
}

TEST(CoreFoundationString, GivesItsBytesOnlyWhenTheyArePlain) {
    EXPECT_STREQ(CFStringGetCStringPtr(CFSTR("abc"), kCFStringEncodingUTF8), "abc");
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("\xc3\xa4"), kCFStringEncodingUTF8), nullptr);
}

TEST(CoreFoundationString, HasALengthInUtf16Units) {
    EXPECT_EQ(CFStringGetLength(CFSTR("")), 0);
    EXPECT_EQ(CFStringGetLength(CFSTR("abc")), 3);
    EXPECT_EQ(CFStringGetLength(CFSTR("\xc3\xa4")), 1);
    EXPECT_EQ(CFStringGetLength(CFSTR("\xe2\x82\xac")), 1);
    EXPECT_EQ(CFStringGetLength(CFSTR("\xf0\x9f\x98\x80")), 2);
}

TEST(CoreFoundationString, IsCopiedWhereItFits) {
    char buffer[4] = {};

    EXPECT_TRUE(CFStringGetCString(CFSTR("abc"), buffer, sizeof buffer, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_FALSE(CFStringGetCString(CFSTR("abcd"), buffer, sizeof buffer, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(CFSTR(""), buffer, -1, kCFStringEncodingUTF8));
}

TEST(CoreFoundationString, FitsIntoItsMaximumSize) {
    for (const char* text :
         {"", "abc", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xff\x80\x80\x80", "\x80\x80"}) {
        CFStringRef sut = CFSTR(text);
        const CFIndex size =
            CFStringGetMaximumSizeForEncoding(CFStringGetLength(sut), kCFStringEncodingUTF8) + 1;
        EXPECT_GE(static_cast<std::size_t>(size), std::string(text).size() + 1) << text;
    }
}

TEST(CoreFoundationBundle, IsTheFolderOfAnExecutableThatLiesInNone) {
    EXPECT_EQ(allBundles(), std::vector<std::string>{ownFolder()});
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.host")), nullptr);
}

TEST(CoreFoundationBundle, IsFoundForALoadedPlugin) {
    const LoadedPlugin plugin("Sample.bundle", plistWithIdentifier("com.corvel.sample"));

    EXPECT_EQ(allBundles(), (std::vector<std::string>{ownFolder(), plugin.bundle}));
    CFBundleRef found = CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.sample"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(pathOf(found), plugin.bundle);
}

TEST(CoreFoundationBundle, IsForgottenWhenThePluginGoes) {
    { const LoadedPlugin plugin("Gone.bundle", plistWithIdentifier("com.corvel.sample")); }

    EXPECT_EQ(CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.sample")), nullptr);
    EXPECT_EQ(allBundles().size(), 1u);
}

TEST(CoreFoundationBundle, HasNoIdentifierWithoutAReadableInfoPlist) {
    for (const char* text :
         {"", "not a plist", "<plist version=\"1.0\"><array/></plist>",
          "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><true/></dict></plist>"}) {
        const LoadedPlugin plugin("Broken.bundle", text);

        EXPECT_EQ(CFBundleGetBundleWithIdentifier(CFSTR("com.corvel.host")), nullptr) << text;
        EXPECT_EQ(allBundles().size(), 2u) << text;
    }
}

TEST(CoreFoundationBundle, HasNoUrlWhenItIsNull) {
    EXPECT_EQ(CFBundleCopyBundleURL(nullptr), nullptr);
    EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, kCFURLPOSIXPathStyle), nullptr);
}

}  // namespace
