#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// A job, or a task of an array job, that Slurm still has to do with.
struct SlurmJob {
    std::string id;  ///< "12" or "12_3"
    bool running = false;

    /// The task's number in its array; 0 for a job that is none.
    int task() const;
};

/// Slurm as its own commands show it. Each throws Failure (HelperFailed) with what Slurm said.

/// Submits `command`, a line for the shell; gives the job's number.
std::string submitJob(const std::vector<std::string>& options, const std::string& command);
/// Those of `jobs` and their tasks that wait or run; what has ended is not among them.
std::vector<SlurmJob> liveJobs(const std::vector<std::string>& jobs);
/// Ends them and returns when they are gone. What has ended before is no error.
void endJobs(const std::vector<std::string>& jobs);

/// `word` as one word for the shell.
std::string quoted(const std::string& word);

}  // namespace Corvel
