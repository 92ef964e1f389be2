#include "worker/Status.h"

extern "C" {
#include <libavutil/error.h>
}

#include <cerrno>

namespace Morvane::Worker {

Status statusOfSystemError(int systemError) {
    switch (systemError) {
        case 0:
            return Status::Success;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return Status::DiskFull;
        case ENOENT:
        case ENOTDIR:
            return Status::NotFound;
        case EEXIST:
            return Status::Exists;
        case EACCES:
        case EPERM:
        case EROFS:
            return Status::NoPermission;
        case ENOMEM:
            return Status::NoMemory;
        case EINVAL:
        case EISDIR:
        case ENAMETOOLONG:
        case ELOOP:
            return Status::BadArgument;
        default:
            return Status::InputOutput;
    }
}

Status statusOfLibraryError(int libraryError, Status otherwise) {
    switch (AVUNERROR(libraryError)) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
        case EIO:
        case ENOENT:
        case ENOTDIR:
        case EEXIST:
        case EACCES:
        case EPERM:
        case EROFS:
        case ENOMEM:
            return statusOfSystemError(AVUNERROR(libraryError));
        default:
            return otherwise;
    }
}

std::string libraryReason(int libraryError) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(libraryError, text, sizeof text);
    return text;
}

}  // namespace Morvane::Worker
