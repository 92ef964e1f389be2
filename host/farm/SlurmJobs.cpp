#include "host/farm/SlurmJobs.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <thread>

#include "host/farm/Program.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ",") + word;
    }
    return text;
}

[[noreturn]] void refused(const std::string& program, const std::string& said) {
    throw Failure(Exit::HelperFailed, fmt::format("{} failed: {}", program, said));
}

}  // namespace

int SlurmJob::task() const {
    const std::size_t underscore = id.find('_');
    return underscore == std::string::npos ? 0 : std::atoi(id.c_str() + underscore + 1);
}

std::string submitJob(const std::vector<std::string>& options, const std::string& command) {
    std::vector<std::string> words{"sbatch", "--parsable"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back("--wrap=" + command);
    const Finished done = runProgram(words);
    // "12" or "12;cluster"
    const std::string id = done.output.substr(0, done.output.find_first_of(";\n"));
    if (done.exit != 0 || id.empty()) {
        refused("sbatch", done.errors);
    }
    return id;
}

std::vector<SlurmJob> liveJobs(const std::vector<std::string>& jobs) {
    if (jobs.empty()) {
        return {};
    }
    const Finished done =
        runProgram({"squeue", "--noheader", "--array", "--format=%i %T", "--jobs=" + joined(jobs)});
    // Jobs that ended long ago are not known any more.
    if (done.exit != 0 && done.errors.find("Invalid job id") == std::string::npos) {
        refused("squeue", done.errors);
    }
    std::vector<SlurmJob> live;
    std::istringstream lines(done.output);
    for (std::string id, state; lines >> id >> state;) {
        live.push_back({id, state == "RUNNING"});
    }
    return live;
}

void endJobs(const std::vector<std::string>& jobs) {
    if (jobs.empty()) {
        return;
    }
    std::vector<std::string> words{"scancel", "--quiet"};
    words.insert(words.end(), jobs.begin(), jobs.end());
    runProgram(words);
    constexpr int mostLooks = 600;
    for (int i = 0; i < mostLooks && !liveJobs(jobs).empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

std::string quoted(const std::string& word) {
    std::string text = "'";
    for (const char character : word) {
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return text + "'";
}

}  // namespace Corvel
