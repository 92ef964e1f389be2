#include "host/farm/ChunkPlan.h"

#include <gtest/gtest.h>

#include "tests/unit/host/FakeSource.h"

namespace Corvel {
namespace {

std::vector<std::pair<std::string, int>> chunksOf(const FakeSource& source, const RenderRequest& request,
                                                  int each) {
    std::vector<std::pair<std::string, int>> chunks;
    for (const FarmChunk& chunk : planChunks(source, request, each)) {
        chunks.emplace_back(chunk.frames, chunk.count);
    }
    return chunks;
}

using Chunks = std::vector<std::pair<std::string, int>>;

TEST(ChunkPlan, DividesAllFramesAndTheLastChunkHasWhatIsLeft) {
    EXPECT_EQ(chunksOf(FakeSource({1, 2, 3, 4, 5}), {}, 2), (Chunks{{"1-2", 2}, {"3-4", 2}, {"5", 1}}));
}

TEST(ChunkPlan, TakesHandlesAndStepsIntoTheFrames) {
    RenderRequest request;
    request.frames = {3, 4, 5};
    request.order.before = 2;
    request.order.after = 2;
    request.order.step = 3;
    EXPECT_EQ(chunksOf(FakeSource({1, 2, 3, 4, 5, 6, 7}), request, 2), (Chunks{{"1,4", 2}, {"7", 1}}));
}

TEST(ChunkPlan, FollowsTheMoviesOrder) {
    RenderRequest request;
    request.order.reverse = true;
    EXPECT_EQ(chunksOf(FakeSource({1, 2, 3}), request, 2), (Chunks{{"2-3", 2}, {"1", 1}}));
}

TEST(ChunkPlan, NeverDividesAFrameThatIsHeld) {
    RenderRequest request;
    request.order.hold = 3;
    EXPECT_EQ(chunksOf(FakeSource({1, 2, 3}), request, 6), (Chunks{{"1-2", 6}, {"3", 3}}));
    EXPECT_EQ(chunksOf(FakeSource({1, 2}), request, 1), (Chunks{{"1", 3}, {"2", 3}}));
}

TEST(ChunkPlan, GivesEveryChunkAFrameThatIsThere) {
    RenderRequest request;
    request.missing = Missing::Hold;
    request.frames = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(chunksOf(FakeSource({1, 2, 5}), request, 2), (Chunks{{"1-2", 2}, {"3-8", 6}}));
}

}  // namespace
}  // namespace Corvel
