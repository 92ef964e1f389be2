#include "worker/movie/OutputFile.h"

#include "ScratchFile.h"
#include "worker/Status.h"

#include <gtest/gtest.h>

#include <fstream>

namespace Morvane::Worker {
namespace {

template <typename Work>
Status statusOf(Work&& work) {
    try {
        work();
    } catch (const StatusError& error) {
        return error.status;
    }
    return Status::Success;
}

TEST(OutputFileTest, WritesAndReadsAnywhere) {
    const ScratchFile scratch;
    OutputFile sut = OutputFile::create(scratch.path(), ExistingFile::Refuse);

    sut.write(5, Bytes{1, 2, 3});

    EXPECT_EQ(sut.size(), 8);
    EXPECT_EQ(sut.read(3, 5), (Bytes{0, 0, 1, 2, 3}));
    EXPECT_EQ(statusOf([&] { sut.read(6, 3); }), Status::InputOutput);
}

TEST(OutputFileTest, RefusesOrEmptiesWhatIsThere) {
    const ScratchFile scratch;
    std::ofstream(scratch.path()) << "old";

    EXPECT_EQ(statusOf([&] { OutputFile::create(scratch.path(), ExistingFile::Refuse); }), Status::Exists);
    EXPECT_EQ(OutputFile::create(scratch.path(), ExistingFile::Replace).size(), 0);
}

TEST(OutputFileTest, KnowsWhenItsNameIsGoneOrSomebodyElses) {
    const ScratchFile scratch;
    OutputFile sut = OutputFile::create(scratch.path(), ExistingFile::Refuse);
    EXPECT_EQ(statusOf([&] { sut.checkStillThere(); }), Status::Success);

    std::filesystem::remove(scratch.path());
    EXPECT_EQ(statusOf([&] { sut.checkStillThere(); }), Status::NotFound);

    std::ofstream(scratch.path()) << "other";
    EXPECT_EQ(statusOf([&] { sut.checkStillThere(); }), Status::NotFound);
    sut.remove();
    EXPECT_TRUE(std::filesystem::exists(scratch.path()));
}

TEST(OutputFileTest, TakesAnotherFilesNameAndPermissions) {
    const ScratchFile scratch;
    const OutputFile other = OutputFile::create(scratch.path(), ExistingFile::Refuse);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::owner_all);
    OutputFile sut = OutputFile::create(scratch.path() + ".new", ExistingFile::Refuse);
    sut.write(0, Bytes{7});

    sut.takePermissionsOf(other);
    sut.renameOver(scratch.path());

    EXPECT_EQ(sut.path(), scratch.path());
    EXPECT_EQ(std::filesystem::file_size(scratch.path()), 1U);
    EXPECT_EQ(std::filesystem::status(scratch.path()).permissions(), std::filesystem::perms::owner_all);
    EXPECT_FALSE(std::filesystem::exists(scratch.path() + ".new"));
    EXPECT_EQ(statusOf([&] { sut.checkStillThere(); }), Status::Success);
}

}  // namespace
}  // namespace Morvane::Worker
