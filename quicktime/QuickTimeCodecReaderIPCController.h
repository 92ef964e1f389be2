#pragma once

#include "processbridge/Controller.h"
#include "quicktime/QuickTimeCodecReaderInterface.h"

namespace Morvane::QuickTime {

/// The reader over the bridge: one worker in mode "read". The messages stand in docs/protocol.md. The
/// description is fetched once, so a controller reads one movie in its life; its metadata are fetched until
/// there are some.
class QuickTimeCodecReaderIPCController : public QuickTimeCodecReaderInterface,
                                          public ProcessBridge::Controller {
public:
    /// Starts the worker; throws as Controller does.
    explicit QuickTimeCodecReaderIPCController(const std::string& identifier);
    ~QuickTimeCodecReaderIPCController() noexcept(false) override = default;

    std::int32_t openFile(const std::string& path, std::int32_t mode) override;
    std::int32_t closeFile() override;
    std::int32_t getProperties(Property::PropertyList& properties) override;
    void getMetadata(std::map<std::string, std::string>& metadata) override;
    std::int32_t fixedEight() override;
    std::int32_t fixedZero() override;
    void ignore() override;
    std::int32_t fixedZeroToo() override;
    std::int32_t fixedOne() override;
    std::int32_t readFrame(std::int32_t frame, char* destination) override;
    std::int32_t getFrameCount() override;
    std::int32_t getInfo(std::int32_t& width, std::int32_t& height, std::int32_t& channels, float& frameRate,
                         std::int32_t& aspectNumerator, std::int32_t& aspectDenominator,
                         std::int32_t& bits) override;

protected:
    void completeRequest(const std::string& request) override;

private:
    void fetchDescription();
    void completeFrame();
    void completeMetadata(const std::string& answer);

    std::int32_t width = -1;  ///< -1 until the description has been fetched
    std::int32_t height = 0;
    std::int32_t third = 0;  ///< channels
    std::int32_t frameCount = 0;
    std::int32_t result = 0;
    std::int32_t fifth = 0;   ///< pixel aspect numerator
    std::int32_t sixth = 0;   ///< pixel aspect denominator
    std::int32_t eighth = 0;  ///< bits a channel
    float frameRate = 0;
    char* destination = nullptr;
    std::map<std::string, std::string> metadata;
};

/// A new controller with a fresh bridge name, owned by the caller; null when there is no memory for it.
/// Throws std::runtime_error when the worker cannot be launched (see Controller).
QuickTimeCodecReaderIPCController* createReaderController();

}  // namespace Morvane::QuickTime
