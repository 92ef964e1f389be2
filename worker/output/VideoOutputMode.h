#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quicktime/VideoOutputTask.h"
#include "worker/Status.h"
#include "worker/bridge/Mode.h"
#include "worker/output/DeviceLock.h"
#include "worker/output/OutputDevices.h"
#include "worker/output/Presenter.h"

namespace Morvane::Worker {

/// The worker as a video output ("videooutput"): lists devices and modes, and shows frames on one device in
/// one mode at a time. The requests stand in docs/protocol.md, what a person sees in docs/video-output.md.
///
/// Legal order: open (0), select a mode (2), send frames (4), close (3), select again. Lists (10, 11) at any
/// time. What comes out of order is answered BadArgument.
class VideoOutputMode : public Mode {
public:
    explicit VideoOutputMode(FindDevices find = findOutputDevices);
    ~VideoOutputMode() override;

    void handle(Request& request) override;
    FailureForm failureForm(std::int32_t opcode) const override;

    /// Ends a wait for the device, so that the worker can end during a pause. Any thread.
    void interrupt() override;

private:
    using Task = QuickTime::VideoOutputTask;

    void openDevice(const Task& task);
    void selectMode(const Task& task);
    void closeOutput();
    void sendFrame(Request& request);
    std::string answerToQuery(std::int32_t opcode);
    std::string modeList(const Task& task);
    std::string deviceList();

    const OutputMode& modeOf(const Task& task);
    void lockDevice();
    void startPresentation(const OutputMode& mode, Presentation presentation);
    void endPresentation(bool showTheRest);

    OutputDevices devices;
    const OutputDevice* device = nullptr;    ///< the one that was opened
    std::string title;                       ///< the name that it was opened by
    std::optional<StatusError> openFailure;  ///< not answered yet
    std::unique_ptr<DeviceLock> lock;
    std::vector<OutputMode> modes;  ///< the opened device's
    std::optional<OutputMode> selected;

    std::mutex mutex;  ///< guards the two below against `interrupt`
    std::unique_ptr<Presenter> presenter;
    bool interrupted = false;
};

}  // namespace Morvane::Worker
