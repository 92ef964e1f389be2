#pragma once

#include "processbridge/Controller.h"
#include "quicktime/QuickTimeVideoOutputInterface.h"

namespace Morvane::QuickTime {

/// The video output over the bridge: one worker in mode "videooutput". The messages stand in
/// docs/protocol.md. Devices and modes are cached for the whole process, whichever controller asked.
class QuickTimeVideoOutputIPCController : public QuickTimeVideoOutputInterface,
                                          public ProcessBridge::Controller {
public:
    /// Starts the worker; throws as Controller does. Good for listing devices and modes.
    explicit QuickTimeVideoOutputIPCController(const std::string& identifier);
    /// The same, and opens a device in the worker; `selectMode` tells whether that worked.
    QuickTimeVideoOutputIPCController(const std::string& identifier, VideoOutputHandle device,
                                      const std::string& name);
    ~QuickTimeVideoOutputIPCController() noexcept(false) override = default;

    std::int32_t selectMode(const VideoOutputMode& mode, std::int32_t display) override;
    std::int32_t closeOutput() override;
    std::int32_t sendFrame(const char* frame) override;
    std::int32_t queryValue5() override;
    std::int32_t queryValue6() override;
    std::int32_t queryValue7() override;
    std::int32_t queryValue8() override;
    std::uint64_t getFrameSize() override;
    void getModes(VideoOutputHandle device, std::vector<VideoOutputMode>& modes) override;
    void getDevices(std::vector<VideoOutputDevice>& devices) override;

protected:
    void completeRequest(const std::string& request) override;

private:
    std::int32_t query(std::int32_t& value, std::int32_t opcode);
    void completeModes(const std::string& request, const std::string& answer);

    std::int32_t value6 = -1;
    std::int32_t value5 = -1;
    std::int32_t value7 = -1;
    std::int32_t value8 = -1;
    std::uint64_t frameSize = 0;  ///< bytes; 0 while unknown
    std::int32_t result = 0;
};

/// A new controller with a fresh bridge name, owned by the caller; null when there is no memory for it.
/// Throws std::runtime_error when the worker cannot be launched (see Controller).
QuickTimeVideoOutputIPCController* createVideoOutputController();
QuickTimeVideoOutputIPCController* createVideoOutputController(VideoOutputHandle device,
                                                               const std::string& name);

}  // namespace Morvane::QuickTime
