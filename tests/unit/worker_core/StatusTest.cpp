#include "worker/Status.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/error.h>
}

#include <cerrno>

namespace Morvane::Worker {
namespace {

TEST(StatusTest, TranslatesTheSystemsErrors) {
    EXPECT_EQ(statusOfSystemError(ENOSPC), Status::DiskFull);
    EXPECT_EQ(statusOfSystemError(EIO), Status::InputOutput);
    EXPECT_EQ(statusOfSystemError(ENOENT), Status::NotFound);
    EXPECT_EQ(statusOfSystemError(EEXIST), Status::Exists);
    EXPECT_EQ(statusOfSystemError(EROFS), Status::NoPermission);
    EXPECT_EQ(statusOfSystemError(ENOMEM), Status::NoMemory);
    EXPECT_EQ(statusOfSystemError(EISDIR), Status::BadArgument);
    EXPECT_EQ(statusOfSystemError(EPIPE), Status::InputOutput);
}

TEST(StatusTest, TranslatesTheLibrarysErrorsAboutFilesAndMemory) {
    EXPECT_EQ(statusOfLibraryError(AVERROR(ENOSPC), Status::CodecFailed), Status::DiskFull);
    EXPECT_EQ(statusOfLibraryError(AVERROR(ENOMEM), Status::CodecFailed), Status::NoMemory);
    EXPECT_EQ(statusOfLibraryError(AVERROR(ENOENT), Status::CodecFailed), Status::NotFound);
}

TEST(StatusTest, LeavesTheLibrarysOtherErrorsToTheCaller) {
    EXPECT_EQ(statusOfLibraryError(AVERROR_INVALIDDATA, Status::CodecFailed), Status::CodecFailed);
    EXPECT_EQ(statusOfLibraryError(AVERROR(EINVAL), Status::NotSupportedByCodec),
              Status::NotSupportedByCodec);
}

}  // namespace
}  // namespace Morvane::Worker
