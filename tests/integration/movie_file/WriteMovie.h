#pragma once

#include "TestPackets.h"
#include "worker/Status.h"
#include "worker/movie/MovieFile.h"

#include <functional>
#include <string>

namespace Morvane::Tests {

/// How a test wants its movie finished.
struct Finish {
    bool indexFirst = true;
    bool inPlace = false;
};

/// Packets of 2 x 2 pixels and 8 bytes each, for movies of many frames.
inline TestPackets::Request tinyFrames(int frames, AVRational rate = {24, 1}) {
    TestPackets::Request request;
    request.encoder = "rawvideo";
    request.pixels = AV_PIX_FMT_UYVY422;
    request.frames = frames;
    request.rate = rate;
    request.width = 2;
    request.height = 2;
    request.tag = MKTAG('2', 'v', 'u', 'y');
    return request;
}

/// Pictures that are stored in another order than they are shown in.
inline TestPackets::Request reorderedFrames(int frames, AVRational rate = {24, 1}) {
    TestPackets::Request request;
    request.encoder = "libx264";
    request.pixels = AV_PIX_FMT_YUV420P;
    request.frames = frames;
    request.rate = rate;
    request.options = {
        {"bf", "3"}, {"b-pyramid", "normal"}, {"g", "48"}, {"preset", "ultrafast"}, {"b_strategy", "0"}};
    return request;
}

/// A whole movie of these packets; `more` is called between the last packet and the end.
inline void writeMovie(const std::string& path, const TestPackets& packets, Finish finish = {},
                       Worker::MovieFile::Options options = {},
                       const std::function<void(Worker::MovieFile&)>& more = {}) {
    options.video = packets.track();
    if (finish.inPlace) {
        options.fewestBytesInPlace = 0;
    }
    Worker::MovieFile movie(path, options);
    for (const AVPacket* packet : packets.packets()) {
        movie.addVideoPacket(*packet);
    }
    if (more) {
        more(movie);
    }
    movie.finish(finish.indexFirst);
}

/// The status that `work` fails with; Success when it does not.
inline Worker::Status statusOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const Worker::StatusError& error) {
        return error.status;
    }
    return Worker::Status::Success;
}

}  // namespace Morvane::Tests
