#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "WriteMovie.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace Morvane::Worker {
namespace {

using namespace Tests;

/// Root may write anywhere; for tests of permissions it becomes somebody else for a while.
class AsNobody {
public:
    AsNobody() {
        if (geteuid() == 0) {
            changed = seteuid(65534) == 0;
        }
    }
    ~AsNobody() {
        if (changed) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    bool changed = false;
};

class MovieFailureTest : public testing::Test {
protected:
    MovieFailureTest() : packets(tinyFrames(3)), path(folder.file("a.mov")) {}

    Status statusOfOpening(const std::string& where, ExistingFile existing = ExistingFile::Replace) {
        return statusOf([&] { MovieFile(where, {packets.track(), std::nullopt, {}, existing}); });
    }

    std::unique_ptr<MovieFile> openWithFrames() {
        auto movie = std::make_unique<MovieFile>(path, MovieFile::Options{packets.track(), std::nullopt, {}});
        for (const AVPacket* packet : packets.packets()) {
            movie->addVideoPacket(*packet);
        }
        return movie;
    }

    TestFolder folder;
    TestPackets packets;
    std::string path;
};

TEST_F(MovieFailureTest, AnExistingFileIsRefusedOrReplacedAsAsked) {
    std::ofstream(path) << "something of somebody's";

    EXPECT_EQ(statusOfOpening(path, ExistingFile::Refuse), Status::Exists);
    EXPECT_EQ(std::filesystem::file_size(path), 23U);

    writeMovie(path, packets);
    EXPECT_EQ(problemsOf(path), "");
}

TEST_F(MovieFailureTest, PlacesWhereNoFileCanBeHaveTheirOwnStatus) {
    std::filesystem::create_directory(folder.file("folder"));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);

    EXPECT_EQ(statusOfOpening(folder.file("missing/a.mov")), Status::NotFound);
    EXPECT_EQ(statusOfOpening(""), Status::NotFound);
    EXPECT_EQ(statusOfOpening(folder.file("folder")), Status::BadArgument);
    EXPECT_EQ(statusOfOpening(folder.file("pipe")), Status::BadArgument);
    EXPECT_EQ(statusOfOpening("/dev/full"), Status::BadArgument);
    EXPECT_EQ(statusOfOpening(folder.file(std::string(300, 'n'))), Status::BadArgument);
}

TEST_F(MovieFailureTest, AFolderThatMayNotBeWrittenIsNoPermission) {
    std::filesystem::permissions(
        folder.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec |
                           std::filesystem::perms::others_read | std::filesystem::perms::others_exec);
    const AsNobody somebodyElse;

    EXPECT_EQ(statusOfOpening(path), Status::NoPermission);
}

TEST_F(MovieFailureTest, WithoutRoomForACopyBesideItTheMovieIsMadeInPlace) {
    // The file may be written, its folder may not.
    std::ofstream(path) << "";
    std::filesystem::permissions(path, std::filesystem::perms::all);
    std::filesystem::permissions(
        folder.path(), std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
                           std::filesystem::perms::group_exec | std::filesystem::perms::others_read |
                           std::filesystem::perms::others_exec);
    {
        const AsNobody somebodyElse;
        writeMovie(path, packets, {true, false});
    }

    EXPECT_EQ(problemsOf(path), "");
    if (geteuid() == 0) {
        EXPECT_EQ(walkMovie(path).topLevel, (std::vector<std::string>{"ftyp", "moov", "free", "mdat"}));
    }
}

TEST_F(MovieFailureTest, ACodecThatMoviesCannotHoldLeavesNoFile) {
    AVCodecParameters* parameters = avcodec_parameters_alloc();
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_VP9;
    parameters->width = parameters->height = 16;

    const Status status = statusOf([&] { MovieFile(path, {{parameters, {24, 1}, ""}, std::nullopt, {}}); });
    avcodec_parameters_free(&parameters);

    EXPECT_EQ(status, Status::NotSupportedByCodec);
    EXPECT_EQ(folder.entries(), 0);
}

TEST_F(MovieFailureTest, ARateOrATimecodeThatCannotBeLeavesNoFile) {
    VideoTrack track = packets.track();
    for (const AVRational rate : {AVRational{0, 1}, AVRational{24, 0}, AVRational{-24, 1}}) {
        track.frameRate = rate;
        EXPECT_EQ(statusOf([&] { MovieFile(path, {track, std::nullopt, {}}); }), Status::BadArgument);
    }
    EXPECT_EQ(statusOf([&] {
                  MovieFile(path, {packets.track(), TimecodeTrack{0, 0, ""}, {}});
              }),
              Status::BadArgument);
    EXPECT_EQ(folder.entries(), 0);
}

TEST_F(MovieFailureTest, AMovieWithoutFramesIsAnErrorAndLeavesNoFile) {
    {
        MovieFile movie(path, {packets.track(), std::nullopt, {}});
        EXPECT_EQ(statusOf([&] { movie.finish(true); }), Status::BadArgument);
    }

    EXPECT_EQ(folder.entries(), 0);
}

TEST_F(MovieFailureTest, AFileRemovedWhileItIsOpenIsFoundOut) {
    const auto movie = openWithFrames();

    std::filesystem::remove(path);

    EXPECT_EQ(statusOf([&] { movie->finish(true); }), Status::NotFound);
    EXPECT_EQ(folder.entries(), 0);
}

TEST_F(MovieFailureTest, AFileReplacedWhileItIsOpenIsFoundOutAndLeftAlone) {
    auto movie = openWithFrames();

    std::ofstream(folder.file("other")) << "something of somebody's";
    std::filesystem::rename(folder.file("other"), path);

    EXPECT_EQ(statusOf([&] { movie->finish(true); }), Status::NotFound);
    movie.reset();
    EXPECT_EQ(std::filesystem::file_size(path), 23U);
    EXPECT_EQ(folder.entries(), 1);
}

TEST_F(MovieFailureTest, AReplacedStubIsLeftAloneToo) {
    {
        MovieFile movie(path, {packets.track(), std::nullopt, {}});
        std::filesystem::remove(path);
        std::ofstream(path) << "something of somebody's";
    }

    EXPECT_EQ(std::filesystem::file_size(path), 23U);
}

TEST_F(MovieFailureTest, WordsNameTheFileAndWhatTheSystemSaid) {
    try {
        MovieFile(folder.file("missing/a.mov"), {packets.track(), std::nullopt, {}});
        FAIL();
    } catch (const StatusError& error) {
        EXPECT_EQ(std::string(error.what()),
                  "cannot create " + folder.file("missing/a.mov") + ": No such file or directory");
    }
}

TEST_F(MovieFailureTest, ThroughALinkTheFileBehindItIsWritten) {
    std::filesystem::create_symlink(folder.file("target.mov"), path);

    writeMovie(path, packets);

    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(problemsOf(folder.file("target.mov")), "");
    EXPECT_EQ(folder.entries(), 2);
}

TEST_F(MovieFailureTest, AReplacedFileKeepsItsPermissions) {
    std::ofstream(path) << "";
    std::filesystem::permissions(path,
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

    writeMovie(path, packets);

    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace
}  // namespace Morvane::Worker
