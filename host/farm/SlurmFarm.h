#pragma once

#include <vector>

#include "host/farm/Farm.h"

namespace Corvel {

/// Submits an array job of the chunks `missing` and a job that joins when all of them are done, and saves the
/// state with the jobs in it. Says on standard output which they are. REQUIRES the lock.
void submitToSlurm(const FarmPlace& place, FarmState& state, const std::vector<int>& missing);

/// Submits again what is not done and not running, and a new join behind all of it. REQUIRES the lock.
void resumeOnSlurm(const FarmPlace& place, FarmState& state);

/// Ends all jobs of the render and returns when they are gone.
void cancelJobs(const FarmState& state);

/// Whether Slurm still has to do with it.
bool isAlive(const FarmState& state);

/// Blocks until the movie is whole, or nothing is left that could make it so. An interrupt only ends the
/// following.
Exit followSlurm(const FarmPlace& place, const FarmState& state, Reporter& reporter);

}  // namespace Corvel
