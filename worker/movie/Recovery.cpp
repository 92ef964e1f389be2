#include "worker/movie/Recovery.h"

#include "worker/Status.h"
#include "worker/movie/FragmentScan.h"
#include "worker/movie/MetadataAtoms.h"
#include "worker/movie/OrdinaryMovie.h"
#include "worker/movie/OutputFile.h"
#include "worker/movie/TimecodeMedia.h"

#include <fmt/core.h>

namespace Morvane::Worker {

RecoveredMovie recoverMovie(const std::string& path, std::int64_t fewestBytesInPlace) {
    OutputFile file = OutputFile::open(path);
    FragmentedMovie found = scanFragments(file);
    RecoveredMovie result;
    if (!found.header.empty() && !found.fragmented) {
        result.wasWhole = true;
        return result;
    }
    if (found.header.empty()) {
        throw StatusError(
            Status::BadArgument,
            fmt::format("{} is no movie that can be recovered: it holds no index at all", path));
    }
    if (found.pictures.empty()) {
        throw StatusError(Status::BadArgument, fmt::format("{} holds no whole frame", path));
    }
    const std::uint32_t ticksPerFrame = found.pictures.front().stored.duration;
    result.framesLeftOut = static_cast<std::int64_t>(dropIncompleteTail(found.pictures, ticksPerFrame));
    result.frames = static_cast<std::int64_t>(found.pictures.size());
    result.framesPerSecond =
        static_cast<double>(readVideoTrack(found.header).timeScale) / static_cast<double>(ticksPerFrame);
    result.timecode = readTimecode(found.header, file);
    makeOrdinary(file, found, {result.timecode, {}, copyMetadataAtoms(found.header)}, true,
                 fewestBytesInPlace);
    return result;
}

}  // namespace Morvane::Worker
