#pragma once

#include <memory>
#include <string>

#include "host/movies/HelperKeeper.h"
#include "quicktime/QuickTimeVideoOutputInterface.h"

namespace Corvel {

/// A QuickTime helper that drives video outputs, from construction to destruction.
class OutputHelper {
public:
    /// A helper that only lists devices; `keeper` looks after it. Throws Failure (HelperFailed).
    explicit OutputHelper(HelperKeeper& keeper);

    /// A helper that has opened a device; whether that worked is told by selecting a mode. Throws Failure
    /// (HelperFailed).
    OutputHelper(Morvane::QuickTime::VideoOutputHandle device, const std::string& name, HelperKeeper& keeper);

    /// Stops the helper, which tells its counts; frames that it has not shown yet are given up.
    ~OutputHelper();
    OutputHelper(const OutputHelper&) = delete;
    OutputHelper& operator=(const OutputHelper&) = delete;

    Morvane::QuickTime::QuickTimeVideoOutputInterface& output() { return *controller; }

private:
    HelperKeeper& keeper;
    std::unique_ptr<Morvane::QuickTime::QuickTimeVideoOutputInterface> controller;
};

}  // namespace Corvel
