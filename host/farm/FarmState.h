#pragma once

#include <string>
#include <vector>

#include "host/farm/FarmPlace.h"

namespace Corvel {

/// One chunk of a movie: an ordinary render of some of its frames.
struct FarmChunk {
    std::string frames;  ///< as --frames takes them
    int count = 0;       ///< frames of the movie
};

/// Everything about a render in chunks that its processes have in common: a small JSON file beside the
/// output. Only the holder of the place's lock writes it.
struct FarmState {
    std::string engine;   ///< "local" or "slurm"
    std::string program;  ///< corvel, as every machine finds it
    std::string folder;   ///< in which relative paths are meant
    std::string node;     ///< where it was submitted
    std::string input;
    std::vector<std::string> options;       ///< of every chunk's render
    std::vector<std::string> firstOptions;  ///< of the first chunk's beside them
    std::vector<std::string> otherOptions;  ///< of the others' beside them
    std::vector<std::string> joinOptions;
    std::vector<FarmChunk> chunks;
    int retries = 1;  ///< of a chunk that fails
    int jobs = 1;     ///< processes at the same time; local only
    int width = 0;    ///< pixels
    int height = 0;
    std::vector<std::string> submitOptions;  ///< of sbatch
    std::vector<std::string> chunkJobs;      ///< array jobs, in the order of their submission; Slurm only
    std::string joinJob;

    int frames() const;
};

bool stateExists(const FarmPlace& place);
/// Throws Failure: InputUnreadable where there is none, NodeFailed for one that cannot be understood.
FarmState loadState(const FarmPlace& place);
/// The file is replaced as a whole. Throws Failure (NodeFailed).
void saveState(const FarmPlace& place, const FarmState& state);

/// "frames 121-180".
std::string chunkText(const FarmState& state, int chunk);

}  // namespace Corvel
