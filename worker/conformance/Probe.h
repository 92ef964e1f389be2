#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "processbridge/Controller.h"

namespace Morvane::Worker {

/// A controller that sends any text and hands out the answer as it came. One for each check, in a process of
/// its own, since a worker that does not answer keeps it waiting for ever.
class Probe : public ProcessBridge::Controller {
public:
    /// Starts the worker; throws as Controller does.
    Probe(const std::string& bridgeName, const std::string& workerPath, const std::string& mode);

    /// Sends the request and gives the text at the start of the data file.
    std::string ask(const std::string& request);
    /// The same with `text` placed in the data file first.
    std::string ask(const std::string& request, const std::string& text);
    /// The same with `bytes` of grey (floats of 0.5) placed first: a frame's pixels.
    std::string askWithFrame(const std::string& request, std::size_t bytes);

    /// How often the worker has posted the done semaphore beyond what was waited for.
    int extraPosts() const;

    pid_t worker() const;

    /// Bytes of the data file when the last answer came.
    std::size_t answerBytes() const { return bytes; }

protected:
    void completeRequest(const std::string& request) override;

private:
    const std::string name;
    std::string answer;
    std::size_t bytes = 0;
};

}  // namespace Morvane::Worker
