#include "worker/movie/ChunkCheck.h"
#include "worker/movie_tool/Commands.h"

#include <fmt/core.h>

#include <algorithm>

namespace Morvane::Worker {

bool checkCommand(const ChunkArguments& arguments) {
    const std::vector<CheckedChunk> chunks = checkChunks(chunksOf(arguments));
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        for (std::string complaint : chunks[i].complaints) {
            std::replace(complaint.begin(), complaint.end(), '\n', ' ');
            fmt::print("{}\t{}\n", i, complaint);
        }
    }
    return std::all_of(chunks.begin(), chunks.end(),
                       [](const CheckedChunk& chunk) { return chunk.complaints.empty(); });
}

}  // namespace Morvane::Worker
