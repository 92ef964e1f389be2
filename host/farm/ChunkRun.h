#pragma once

#include "host/farm/FarmState.h"
#include "host/render/Failure.h"

namespace Corvel {

/// Renders one chunk, on the machine that was chosen for it: runs `corvel render` into a part file, keeps the
/// tally, and gives the part the chunk's name when it is whole. A failure's reasons go into the tally and to
/// standard error; under Slurm the job is put back into the queue where the chunk may be tried again. An
/// interrupt ends the render and removes the part. Blocks.
Exit runChunk(const FarmPlace& place, const FarmState& state, int chunk);

}  // namespace Corvel
