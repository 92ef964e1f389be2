#include "worker/movie/MovieFile.h"

#include "MovieWalker.h"
#include "Readers.h"
#include "TestFolder.h"
#include "TestPackets.h"
#include "worker/Status.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

using namespace Tests;

TEST(MovieFileTest, WritesOneMovie) {
    TestFolder folder;
    const TestPackets packets({});
    {
        MovieFile sut(folder.file("a.mov"),
                      {packets.track(), TimecodeTrack{24, 86400, "A001"}, {{"title", "T"}}});
        for (AVPacket* packet : packets.packets()) {
            sut.addVideoPacket(*packet);
        }
        sut.finish(true);
    }
    EXPECT_EQ(problemsOf(folder.file("a.mov")), "");
    EXPECT_EQ(decodedFrames(folder.file("a.mov")), 24);
}

}  // namespace
}  // namespace Morvane::Worker
