#pragma once

#include "processbridge/Controller.h"
#include "quicktime/QuickTimeCodecWriterInterface.h"

namespace Morvane::QuickTime {

/// The writer over the bridge: one worker in mode "write". The messages stand in docs/protocol.md.
class QuickTimeCodecWriterIPCController : public QuickTimeCodecWriterInterface,
                                          public ProcessBridge::Controller {
public:
    /// Starts the worker; throws as Controller does.
    explicit QuickTimeCodecWriterIPCController(const std::string& identifier);
    ~QuickTimeCodecWriterIPCController() noexcept(false) override = default;

    void initialise() override;
    std::int32_t openFile(const std::string& path, std::int32_t mode) override;
    void finishVideo() override;
    void finishSamples() override;
    std::int32_t closeFile(bool flatten) override;
    std::int32_t addFrame(std::int32_t frame, const char* pixels, bool flag) override;
    std::int32_t addSamples(std::int64_t position, std::int64_t count, const char* data) override;
    void setSampleFormat(std::int32_t channels, bool floatingPoint, std::uint32_t sampleRate,
                         const std::string& layout) override;
    std::int32_t setProperties(const Property::PropertyList& properties) override;
    std::int32_t addTimecodeTrack(Timecode::FrameRate rate, std::int64_t startFrame,
                                  const std::string& reel) override;
    std::int32_t addAudioFile(const char* path, float offset) override;
    void configure(std::int32_t width, std::int32_t height, std::int32_t keyFrameRate, std::int32_t quality,
                   bool hasAlpha, const std::string& settings, float framesPerSecond) override;
    std::string textOperation6(const std::string& text) override;
    std::string editSettings(const std::string& settings) override;
    std::string textOperation7(const std::string& text) override;
    std::string textOperation21(const std::string& text) override;
    std::string textOperation22(const std::string& text) override;
    const char* const* codecList() override;
    std::int32_t getCodec() override;
    void setCodec(std::int32_t index) override;
    void setUseFormatAspect(bool on) override;
    std::int32_t getQuality() override;
    float getFrameRate() override;
    std::int32_t getKeyFrameRate() override;
    char* acquireBuffer(std::size_t count) override;
    void releaseBuffer(char* buffer) override;

protected:
    void completeRequest(const std::string& request) override;

private:
    bool handOver(const char* bytes, std::uint64_t length);
    std::string askText(std::int32_t opcode, const std::string& text);

    std::int32_t result = 0;
    std::int32_t width = -1;
    std::int32_t height = 0;
    std::int32_t codec = 0;
    std::int32_t keyFrameRate = 0;
    std::int32_t quality = 0;
    float frameRate = 0;
    std::string textResult;
    std::uint64_t sampleSize = 0;  ///< bytes a sample frame; 0 until a sample format is set
};

/// A new controller with a fresh bridge name, owned by the caller; null when there is no memory for it.
/// Throws std::runtime_error when the worker cannot be launched (see Controller).
QuickTimeCodecWriterIPCController* createWriterController();

}  // namespace Morvane::QuickTime
