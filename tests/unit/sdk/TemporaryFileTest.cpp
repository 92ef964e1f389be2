#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "tests/unit/sdk/TestNode.h"

namespace Kex::Image {
namespace {

using Testing::TestApplication;

class NamingWriter : public Writer {
public:
    using Writer::renameFromHash;
    using Writer::Writer;
    void execute() override {}
};

class TemporaryFile : public testing::Test {
protected:
    TemporaryFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "corvel-sdk-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }

    ~TemporaryFile() override { std::filesystem::remove_all(folder); }

    static void put(const std::filesystem::path& path, const std::string& text) {
        std::ofstream(path) << text;
    }

    static std::string contents(const std::filesystem::path& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

    std::filesystem::path folder;
    TestApplication application;
};

TEST_F(TemporaryFile, IsHiddenBesideTheOutputAndKeepsTheExtension) {
    Write node(application, (folder / "ball.mov").string());
    NamingWriter sut(&node);

    const std::filesystem::path name = sut.createFileHash();

    EXPECT_EQ(name.parent_path(), folder);
    EXPECT_EQ(name.filename().string().substr(0, 6), ".ball.");
    EXPECT_EQ(name.extension(), ".mov");
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(TemporaryFile, HasOneNameARenderAndAnotherOneNextTime) {
    Write node(application, (folder / "ball.mov").string());
    NamingWriter sut(&node);
    EXPECT_EQ(sut.temporaryFile(), "");

    const std::string first = sut.createFileHash();
    EXPECT_EQ(sut.createFileHash(), first);
    EXPECT_EQ(sut.temporaryFile(), first);
    put(first, "movie");
    sut.renameFromHash();

    EXPECT_EQ(sut.temporaryFile(), "");
    EXPECT_NE(sut.createFileHash(), first);
}

TEST_F(TemporaryFile, OfARelativeOutputLiesInTheWorkingFolder) {
    Write node(application, "ball.mov");
    NamingWriter sut(&node);

    EXPECT_EQ(sut.createFileHash().find('/'), std::string::npos);
}

TEST_F(TemporaryFile, OfTheLongestOutputNameCanStillBeMade) {
    Write node(application, (folder / (std::string(251, 'n') + ".mov")).string());
    NamingWriter sut(&node);

    put(sut.createFileHash(), "movie");

    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(TemporaryFile, ReplacesAnOlderOutput) {
    const std::filesystem::path output = folder / "ball.mov";
    put(output, "old");
    Write node(application, output.string());
    NamingWriter sut(&node);
    put(sut.createFileHash(), "new");

    sut.renameFromHash();

    EXPECT_EQ(contents(output), "new");
    EXPECT_EQ(filesInFolder(), 1U);
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(TemporaryFile, ThatWasNeverMadeLeavesTheOutputAloneAndIsAnError) {
    const std::filesystem::path output = folder / "ball.mov";
    put(output, "old");
    Write node(application, output.string());
    NamingWriter sut(&node);
    const std::string name = sut.createFileHash();

    sut.renameFromHash();

    EXPECT_EQ(contents(output), "old");
    ASSERT_EQ(application.errors.size(), 1U);
    EXPECT_NE(application.errors[0].find(name), std::string::npos);
    EXPECT_NE(application.errors[0].find(output.string()), std::string::npos);
    EXPECT_TRUE(node.failed());
}

TEST_F(TemporaryFile, ThatWasNeverNamedIsAnErrorToo) {
    const std::filesystem::path output = folder / "ball.mov";
    put(output, "old");
    Write node(application, output.string());
    NamingWriter sut(&node);

    sut.renameFromHash();

    EXPECT_EQ(contents(output), "old");
    EXPECT_EQ(application.errors, std::vector<std::string>{"Nothing was written to " + output.string()});
}

TEST_F(TemporaryFile, StaysWhereItIsWhenTheOutputCannotBeReplaced) {
    const std::filesystem::path output = folder / "ball.mov";
    std::filesystem::create_directory(output);
    Write node(application, output.string());
    NamingWriter sut(&node);
    const std::string name = sut.createFileHash();
    put(name, "movie");

    sut.renameFromHash();

    EXPECT_EQ(contents(name), "movie");
    ASSERT_EQ(application.errors.size(), 1U);
    EXPECT_NE(application.errors[0].find("directory"), std::string::npos);
}

}  // namespace
}  // namespace Kex::Image
