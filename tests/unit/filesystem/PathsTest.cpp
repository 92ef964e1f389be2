#include <gtest/gtest.h>

#include "filesystem/FileSystem.h"

namespace {

using namespace Morvane::FileSystem;

/// "stem|extension"
std::string split(const std::string& path) {
    std::string stem;
    std::string extension;
    splitExtension(path, &stem, &extension);
    return stem + "|" + extension;
}

/// "directory|file name"
std::string splitFolder(const std::string& path) {
    std::string directory;
    std::string fileName;
    splitDirectory(path, &directory, &fileName);
    return directory + "|" + fileName;
}

TEST(BaseName, IsThePosixOne) {
    EXPECT_EQ(baseName("/a/b.mov"), "b.mov");
    EXPECT_EQ(baseName("/a/b/"), "b");
    EXPECT_EQ(baseName("/"), "/");
    EXPECT_EQ(baseName(""), ".");
    EXPECT_EQ(baseName("b"), "b");
}

TEST(DirectoryName, IsThePosixOne) {
    EXPECT_EQ(directoryName("/a/b.mov"), "/a");
    EXPECT_EQ(directoryName("/a/b/"), "/a");
    EXPECT_EQ(directoryName("/"), "/");
    EXPECT_EQ(directoryName(""), ".");
    EXPECT_EQ(directoryName("b"), ".");
}

TEST(BaseName, LeavesItsArgumentAlone) {
    const std::string path = "/a/b/";

    baseName(path);
    directoryName(path);

    EXPECT_EQ(path, "/a/b/");
}

TEST(WithTrailingSlash, AddsOneWhereNoneIs) {
    EXPECT_EQ(withTrailingSlash("/a"), "/a/");
    EXPECT_EQ(withTrailingSlash("/a/"), "/a/");
    EXPECT_EQ(withTrailingSlash("/"), "/");
    EXPECT_EQ(withTrailingSlash(""), "");
}

TEST(SplitExtension, CutsAtTheLastDotOfTheName) {
    EXPECT_EQ(split("a/b.mov"), "a/b|.mov");
    EXPECT_EQ(split("a/b.tar.gz"), "a/b.tar|.gz");
    EXPECT_EQ(split("a/b."), "a/b|.");
    EXPECT_EQ(split("a.b/c"), "a.b/c|");
    EXPECT_EQ(split(R"(a.b\c)"), R"(a.b\c|)");
    EXPECT_EQ(split("a.b:c"), "a.b:c|");
    EXPECT_EQ(split(""), "|");
}

TEST(SplitExtension, FindsNoneInANameThatBeginsWithItsDot) {
    EXPECT_EQ(split(".profile"), ".profile|");
    EXPECT_EQ(split("a/.profile"), "a/.profile|");
    EXPECT_EQ(split(R"(a\.profile)"), R"(a\.profile|)");
    EXPECT_EQ(split("C:.profile"), "C:.profile|");
    EXPECT_EQ(split("a/.b.c"), "a/.b|.c");
    EXPECT_EQ(split(".."), ".|.");
}

TEST(SplitExtension, TakesNullForAResultThatNobodyWants) {
    std::string path = "b.mov";

    splitExtension(path, nullptr, nullptr);
    splitExtension(path, &path, nullptr);

    EXPECT_EQ(path, "b");
}

TEST(SplitDirectory, CutsBehindTheLastSeparator) {
    EXPECT_EQ(splitFolder("/a/b.mov"), "/a/|b.mov");
    EXPECT_EQ(splitFolder("/a/"), "/a/|");
    EXPECT_EQ(splitFolder(R"(C:\a\b)"), R"(C:\a\|b)");
    EXPECT_EQ(splitFolder("C:b"), "C:|b");
    EXPECT_EQ(splitFolder(""), "|");
}

// Deliberate: without a separator everything is directory.
TEST(SplitDirectory, TakesANameAloneForADirectory) {
    EXPECT_EQ(splitFolder("b.mov"), "b.mov|");
}

TEST(SplitDirectory, TakesNullForAResultThatNobodyWants) {
    std::string path = "a/b.mov";

    splitDirectory(path, nullptr, nullptr);
    splitDirectory(path, nullptr, &path);

    EXPECT_EQ(path, "b.mov");
}

TEST(ExtensionAfter, BeginsAtTheLastCharacterOfItsKind) {
    EXPECT_EQ(extensionAfter("/a/b.mov", '.'), ".mov");
    EXPECT_EQ(extensionAfter("b.tar.gz", '.'), ".gz");
    EXPECT_EQ(extensionAfter("/a/b_v2", '_'), "_v2");
    EXPECT_EQ(extensionAfter("_v2", '_'), "_v2");
}

TEST(ExtensionAfter, IsEmptyBeforeTheLastSlash) {
    EXPECT_EQ(extensionAfter("/a.b/c", '.'), "");
    EXPECT_EQ(extensionAfter("/a/b", '.'), "");
    EXPECT_EQ(extensionAfter("a/b", '/'), "");
    EXPECT_EQ(extensionAfter("", '.'), "");
}

// Deliberate: only the path's own first characters count, not the file name's.
TEST(ExtensionAfter, IsEmptyForADotThatBeginsThePath) {
    EXPECT_EQ(extensionAfter(".profile", '.'), "");
    EXPECT_EQ(extensionAfter("..", '.'), "");
    EXPECT_EQ(extensionAfter("..mov", '.'), "");
    EXPECT_EQ(extensionAfter("a.", '.'), ".");
    EXPECT_EQ(extensionAfter("/.profile", '.'), ".profile");
}

TEST(Slashes, TurnInPlace) {
    char text[] = R"(/a\b/c)";

    toBackslashes(text);
    EXPECT_STREQ(text, R"(\a\b\c)");

    toSlashes(text);
    EXPECT_STREQ(text, "/a/b/c");
}

TEST(Slashes, TurnInStringsToo) {
    std::string text = R"(/a\b)";

    toBackslashes(text);
    EXPECT_EQ(text, R"(\a\b)");

    toSlashes(text);
    EXPECT_EQ(text, "/a/b");
}

TEST(ReverseInPlace, TurnsBytesRound) {
    std::string odd = "abc";
    std::string even = "abcd";
    std::string none;

    reverseInPlace(odd.data(), odd.size());
    reverseInPlace(even.data(), even.size());
    reverseInPlace(none.data(), 0);

    EXPECT_EQ(odd, "cba");
    EXPECT_EQ(even, "dcba");
}

}  // namespace
