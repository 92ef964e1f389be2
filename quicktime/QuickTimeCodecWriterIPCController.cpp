#include "quicktime/QuickTimeCodecWriterIPCController.h"

#include <cstring>
#include <new>
#include <vector>

#include "processbridge/ControllerResources.h"
#include "property/RequestText.h"
#include "quicktime/Answer.h"
#include "quicktime/BridgeName.h"
#include "quicktime/Worker.h"

namespace Morvane::QuickTime {

namespace {

using Property::readNumber;

template <typename... Arguments>
std::string request(std::int32_t opcode, const Arguments&... arguments) {
    return Property::requestText('W', opcode, arguments...);
}

/// The codecs of the worker, then null; empty until the first controller has asked. Filled under that
/// controller's mutex and never cleared.
std::vector<const char*> sharedCodecList;

/// Never freed: the host's knobs point to these texts as long as the process lives.
const char* keepCodecEntry(const std::string& entry) {
    return strdup(entry.c_str());
}

void fillCodecList(const std::string& answer) {
    const std::deque<std::string> entries = Property::splitFields(answer);
    for (const std::string& entry : entries) {
        sharedCodecList.push_back(keepCodecEntry(entry));
    }
    sharedCodecList.push_back(nullptr);
}

}  // namespace

QuickTimeCodecWriterIPCController::QuickTimeCodecWriterIPCController(const std::string& identifier)
    : Controller(identifier, workerPath, {"write"}) {}

void QuickTimeCodecWriterIPCController::initialise() {
    // The worker needs nothing before the first request.
}

std::int32_t QuickTimeCodecWriterIPCController::openFile(const std::string& path, std::int32_t mode) {
    sendRequest(request(0, path, mode));
    return result;
}

void QuickTimeCodecWriterIPCController::finishVideo() {
    sendRequest(request(2));
}

void QuickTimeCodecWriterIPCController::finishSamples() {
    sendRequest(request(19));
}

std::int32_t QuickTimeCodecWriterIPCController::closeFile(bool flatten) {
    sendRequest(request(4, flatten));
    return result;
}

/// Puts the bytes into shared memory, unless they are there already. False when there is no room for them.
bool QuickTimeCodecWriterIPCController::handOver(const char* bytes, std::uint64_t length) {
    if (resources->dataFile.isValid() && bytes == sharedData()) {
        return true;
    }
    const bool mapped = resizeSharedData(length);
    if (length == 0) {
        return true;
    }
    if (!mapped || bytes == nullptr) {
        return false;
    }
    std::memcpy(resources->dataFile.data(), bytes, length);
    return true;
}

std::int32_t QuickTimeCodecWriterIPCController::addFrame(std::int32_t frame, const char* pixels, bool flag) {
    if (!handOver(pixels, frameBytes(width, height))) {
        return result = noSharedMemory;
    }
    sendRequest(request(1, frame, flag));
    return result;
}

std::int32_t QuickTimeCodecWriterIPCController::addSamples(std::int64_t position, std::int64_t count,
                                                           const char* data) {
    if (!handOver(data, static_cast<std::uint64_t>(count) * sampleSize)) {
        return result = noSharedMemory;
    }
    sendRequest(request(18, position, count));
    return result;
}

void QuickTimeCodecWriterIPCController::setSampleFormat(std::int32_t channels, bool floatingPoint,
                                                        std::uint32_t sampleRate, const std::string& layout) {
    writeSharedString(layout);
    sendRequest(request(20, channels, floatingPoint, sampleRate));
    sampleSize = 4;
}

std::int32_t QuickTimeCodecWriterIPCController::setProperties(const Property::PropertyList& properties) {
    writeSharedString(Property::writePropertyList(properties));
    sendRequest(request(11));
    return 0;
}

std::int32_t QuickTimeCodecWriterIPCController::addTimecodeTrack(Timecode::FrameRate rate,
                                                                 std::int64_t startFrame,
                                                                 const std::string& reel) {
    sendRequest(request(12, rate.toFloat(), startFrame, reel));
    return 0;
}

std::int32_t QuickTimeCodecWriterIPCController::addAudioFile(const char* path, float offset) {
    sendRequest(request(3, offset, path));
    // Its answer is not read: this is what the operation before left, deliberately.
    return result;
}

void QuickTimeCodecWriterIPCController::configure(std::int32_t newWidth, std::int32_t newHeight,
                                                  std::int32_t newKeyFrameRate, std::int32_t newQuality,
                                                  bool hasAlpha, const std::string& settings,
                                                  float framesPerSecond) {
    width = newWidth;
    height = newHeight;
    writeSharedString(settings);
    sendRequest(request(5, newWidth, newHeight, framesPerSecond, newKeyFrameRate, newQuality, hasAlpha));
}

/// The exchange of the operations whose answer is a text that `completeRequest` does not keep.
std::string QuickTimeCodecWriterIPCController::askText(std::int32_t opcode, const std::string& text) {
    writeSharedString(text);
    sendRequest(request(opcode));
    return readSharedString();
}

std::string QuickTimeCodecWriterIPCController::textOperation6(const std::string& text) {
    return askText(6, text);
}

std::string QuickTimeCodecWriterIPCController::editSettings(const std::string& settings) {
    writeSharedString(settings);
    sendRequest(request(8));
    return textResult;
}

std::string QuickTimeCodecWriterIPCController::textOperation7(const std::string& text) {
    writeSharedString(text);
    sendRequest(request(7));
    return textResult;
}

std::string QuickTimeCodecWriterIPCController::textOperation21(const std::string& text) {
    return askText(21, text);
}

std::string QuickTimeCodecWriterIPCController::textOperation22(const std::string& text) {
    return askText(22, text);
}

const char* const* QuickTimeCodecWriterIPCController::codecList() {
    static constexpr const char* nothing = nullptr;
    if (sharedCodecList.empty()) {
        sendRequest(request(14));
    }
    return sharedCodecList.empty() ? &nothing : sharedCodecList.data();
}

std::int32_t QuickTimeCodecWriterIPCController::getCodec() {
    sendRequest(request(10));
    return codec;
}

void QuickTimeCodecWriterIPCController::setCodec(std::int32_t index) {
    sendRequest(request(9, index));
}

void QuickTimeCodecWriterIPCController::setUseFormatAspect(bool on) {
    sendRequest(request(13, on));
}

std::int32_t QuickTimeCodecWriterIPCController::getQuality() {
    sendRequest(request(16));
    return quality;
}

float QuickTimeCodecWriterIPCController::getFrameRate() {
    sendRequest(request(15));
    return frameRate;
}

std::int32_t QuickTimeCodecWriterIPCController::getKeyFrameRate() {
    sendRequest(request(17));
    return keyFrameRate;
}

char* QuickTimeCodecWriterIPCController::acquireBuffer(std::size_t count) {
    resources->dataFile.map();
    resizeSharedData(count * sizeof(float));
    return resources->dataFile.data();
}

void QuickTimeCodecWriterIPCController::releaseBuffer(char* /*buffer*/) {
    resources->dataFile.unmap();
}

void QuickTimeCodecWriterIPCController::completeRequest(const std::string& request) {
    const std::string answer = sharedText();
    switch (Property::parseOpcode(request)) {
        case 0:
        case 4:
            readNumber(answer, result);
            break;
        case 1:
        case 18:
            if (isError(answer)) {
                readErrorCode(answer, result);
            } else {
                result = 0;
            }
            break;
        case 14:
            fillCodecList(answer);
            break;
        case 5:
        case 7:
        case 8:
            textResult = answer;
            break;
        case 10:
            readNumber(answer, codec);
            break;
        case 16:
            readNumber(answer, quality);
            break;
        case 17:
            readNumber(answer, keyFrameRate);
            break;
        case 15:
            readNumber(answer, frameRate);
            break;
        default:
            break;
    }
}

QuickTimeCodecWriterIPCController* createWriterController() {
    return new (std::nothrow) QuickTimeCodecWriterIPCController(makeBridgeName());
}

}  // namespace Morvane::QuickTime
