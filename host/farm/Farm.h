#pragma once

#include <string>
#include <vector>

#include "host/farm/FarmLock.h"
#include "host/farm/FarmState.h"
#include "host/render/Failure.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// What a person asks of the farm beside the render itself.
struct FarmRequest {
    std::string engine;   ///< "local" or "slurm"; empty: no farm
    int chunkFrames = 0;  ///< 0: not given
    int chunks = 0;       ///< 0: not given
    int jobs = 0;         ///< local: 0 for one for each two processors
    int retries = 1;
    bool wait = false;  ///< follow to the end; local always does
    std::string partition;
    std::string submitOptions;  ///< of sbatch, as a shell would read them
};

/// The operations on a render in chunks, by the processes that take part. Each throws Failure.

/// Puts the state beside the output and has the engine begin. `state` lacks nothing but the engine's own
/// fields. Local: blocks until the movie is whole. Slurm: returns when the jobs are submitted, or with `wait`
/// when the movie is whole; says on standard output which jobs they are.
Exit submit(const FarmPlace& place, FarmState state, bool wait, Reporter& reporter);

/// Says on standard output how far it is.
Exit farmStatus(const FarmPlace& place);
/// Ends it; leaves nothing but the finished chunks, and says where.
Exit farmCancel(const FarmPlace& place);
/// Renders what is missing or does not verify, and joins.
Exit farmResume(const FarmPlace& place, bool wait, Reporter& reporter);
/// The last job: joins the chunks, if all of them verify, and removes everything but the movie.
Exit farmFinish(const FarmPlace& place);

/// The chunks that are not there or do not verify, counted from 1; those that do not verify are removed and
/// told of. `skipped` are not looked at.
std::vector<int> missingChunks(const FarmPlace& place, const FarmState& state,
                               const std::vector<int>& skipped);

/// Joins; REQUIRES the lock. Says why not, where the chunks do not verify; they stay then.
Exit joinChunks(const FarmPlace& place, const FarmState& state);

/// Tells `reporter` how far all chunks together are.
class FarmProgress {
public:
    FarmProgress(const FarmPlace& place, const FarmState& state, Reporter& reporter);

    /// Looks at the tallies and tells what is new.
    void update();
    /// The last report. `exit` decides whether there is a movie.
    Exit end(Exit exit);

private:
    const FarmPlace& place;
    const FarmState& state;
    Reporter& reporter;
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    int before = -1;  ///< frames that were done when it began
    int told = -1;
};

}  // namespace Corvel
