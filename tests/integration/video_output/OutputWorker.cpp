#include "OutputWorker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "Program.h"
#include "processbridge/ResourceNames.h"
#include "property/FieldEncoding.h"
#include "quicktime/BridgeName.h"

namespace Morvane::Testing {

namespace {

constexpr std::chrono::seconds patience{30};

/// What the test writes to standard error goes to `file` while it lives, and so does what a worker that is
/// started meanwhile ever writes.
class StandardErrorTo {
public:
    explicit StandardErrorTo(const std::filesystem::path& file) : saved(dup(STDERR_FILENO)) {
        const int target = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(target, STDERR_FILENO);
        close(target);
    }

    ~StandardErrorTo() {
        dup2(saved, STDERR_FILENO);
        close(saved);
    }

    StandardErrorTo(const StandardErrorTo&) = delete;
    StandardErrorTo& operator=(const StandardErrorTo&) = delete;

private:
    int saved;
};

}  // namespace

OutputWorker::OutputWorker() {
    start();
}

OutputWorker::OutputWorker(QuickTime::VideoOutputHandle device, const std::string& name) {
    start(device, name);
}

template <typename... Arguments>
void OutputWorker::start(const Arguments&... arguments) {
    const std::string identifier = QuickTime::makeBridgeName();
    dataFile = ProcessBridge::ResourceNames(identifier).dataFile;
    folder = std::filesystem::path(CORVEL_SCRATCH_FOLDER) / ("VideoOutput-" + identifier);
    create_directories(folder);
    setenv("CORVEL_TEMP_DIR", folder.c_str(), 1);
    const std::vector<pid_t> before = childrenOf(getpid());
    const StandardErrorTo redirected(folder / "stderr");
    controller = std::make_unique<QuickTime::QuickTimeVideoOutputIPCController>(identifier, arguments...);
    for (const pid_t child : childrenOf(getpid()))
        if (std::find(before.begin(), before.end(), child) == before.end())
            worker = child;
}

OutputWorker::~OutputWorker() {
    controller.reset();
    EXPECT_TRUE(kill(worker, 0) == -1 && errno == ESRCH) << "the worker is still there";
    EXPECT_TRUE(std::filesystem::is_empty(folder / "processbridge"));
    std::filesystem::remove_all(folder);
}

std::vector<std::string> OutputWorker::deviceNames() {
    controller->sendRequest("V0000000b");
    const auto fields = Property::splitFields(controller->readSharedString());
    std::vector<std::string> names;
    for (std::size_t field = 0; field < fields.size(); field += 2)
        names.push_back(fields[field]);
    return names;
}

bool OutputWorker::hasMapped(std::uint64_t bytes) const {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (mappedBytes() < bytes) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

/// Of the largest mapping that it has of the shared data file.
std::uint64_t OutputWorker::mappedBytes() const {
    std::uint64_t most = 0;
    std::ifstream maps("/proc/" + std::to_string(worker) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        char dash = 0;
        if (line.ends_with("/" + dataFile) && fields >> std::hex >> begin >> dash >> end)
            most = std::max(most, end - begin);
    }
    return most;
}

std::string OutputWorker::standardError() const {
    std::ifstream file(folder / "stderr");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

QuickTime::VideoOutputMode outputMode(int width, int height, double rate) {
    return {width, height, "", static_cast<std::int32_t>(std::lround(rate * 1000))};
}

}  // namespace Morvane::Testing
