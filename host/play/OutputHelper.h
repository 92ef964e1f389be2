#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/render/HelperSession.h"
#include "quicktime/QuickTimeVideoOutputInterface.h"

namespace Corvel {

/// A QuickTime helper that drives video outputs, with all that it needs around it, from construction to
/// destruction. One a process at a time. What the helper says goes to the reporter.
class OutputHelper {
public:
    /// A helper that only lists devices. Throws Failure (HelperFailed).
    explicit OutputHelper(Reporter& reporter);

    /// A helper that has opened a device; whether that worked is told by selecting a mode. `frameBytes` is
    /// what one frame takes. Throws Failure (HelperFailed).
    OutputHelper(Morvane::QuickTime::VideoOutputHandle device, const std::string& name,
                 std::uint64_t frameBytes, Reporter& reporter);

    /// Stops the helper, which tells its counts; frames that it has not shown yet are given up.
    ~OutputHelper();
    OutputHelper(const OutputHelper&) = delete;
    OutputHelper& operator=(const OutputHelper&) = delete;

    Morvane::QuickTime::QuickTimeVideoOutputInterface& output() { return *controller; }
    HelperSession& session() { return session_; }

private:
    HelperSession session_;
    std::unique_ptr<Morvane::QuickTime::QuickTimeVideoOutputInterface> controller;
};

}  // namespace Corvel
