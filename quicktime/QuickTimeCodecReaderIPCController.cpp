#include "quicktime/QuickTimeCodecReaderIPCController.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/LargeCopy.h"
#include "processbridge/ControllerResources.h"
#include "property/RequestText.h"
#include "quicktime/Answer.h"
#include "quicktime/BridgeName.h"
#include "quicktime/Worker.h"

namespace Morvane::QuickTime {

namespace {

template <typename... Arguments>
std::string request(std::int32_t opcode, const Arguments&... arguments) {
    return Property::requestText('R', opcode, arguments...);
}

}  // namespace

QuickTimeCodecReaderIPCController::QuickTimeCodecReaderIPCController(const std::string& identifier)
    : Controller(identifier, workerPath, {"read"}) {}

std::int32_t QuickTimeCodecReaderIPCController::openFile(const std::string& path, std::int32_t mode) {
    sendRequest(request(1, path, mode));
    return result;
}

std::int32_t QuickTimeCodecReaderIPCController::closeFile() {
    sendRequest(request(3));
    return result;
}

std::int32_t QuickTimeCodecReaderIPCController::getProperties(Property::PropertyList& properties) {
    sendRequest(request(5));
    Property::readPropertyList(readSharedString(), properties);
    return 0;
}

void QuickTimeCodecReaderIPCController::getMetadata(std::map<std::string, std::string>& pairs) {
    if (metadata.empty()) {
        sendRequest(request(4));
    }
    pairs = metadata;
}

// Five questions of the interface that a movie behind the bridge answers without asking; deliberately fixed.

std::int32_t QuickTimeCodecReaderIPCController::fixedEight() {
    return 8;
}

std::int32_t QuickTimeCodecReaderIPCController::fixedZero() {
    return 0;
}

void QuickTimeCodecReaderIPCController::ignore() {}

std::int32_t QuickTimeCodecReaderIPCController::fixedZeroToo() {
    return 0;
}

std::int32_t QuickTimeCodecReaderIPCController::fixedOne() {
    return 1;
}

std::int32_t QuickTimeCodecReaderIPCController::readFrame(std::int32_t frame, char* newDestination) {
    destination = newDestination;
    sendRequest(request(0, frame));
    return result;
}

void QuickTimeCodecReaderIPCController::fetchDescription() {
    if (width == -1) {
        sendRequest(request(2));
    }
}

std::int32_t QuickTimeCodecReaderIPCController::getFrameCount() {
    fetchDescription();
    return frameCount;
}

std::int32_t QuickTimeCodecReaderIPCController::getInfo(std::int32_t& outWidth, std::int32_t& outHeight,
                                                        std::int32_t& channels, float& outFrameRate,
                                                        std::int32_t& aspectNumerator,
                                                        std::int32_t& aspectDenominator, std::int32_t& bits) {
    fetchDescription();
    outWidth = width;
    outHeight = height;
    channels = third;
    outFrameRate = frameRate;
    aspectNumerator = fifth;
    aspectDenominator = sixth;
    bits = eighth;
    return height;
}

void QuickTimeCodecReaderIPCController::completeRequest(const std::string& request) {
    const std::int32_t opcode = Property::parseOpcode(request);
    if (opcode == 0) {
        completeFrame();
        return;
    }
    const std::string answer = sharedText();
    switch (opcode) {
        case 1:
        case 3:
            Property::readNumber(answer, result);
            break;
        case 2:
            Property::NumberReader(answer) >> width >> height >> third >> frameRate >> fifth >> sixth >>
                frameCount >> eighth;
            break;
        case 4:
            completeMetadata(answer);
            break;
        default:
            break;
    }
}

/// A frame of floats is no text: only its first bytes are looked at before it is copied.
void QuickTimeCodecReaderIPCController::completeFrame() {
    const std::string start = sharedText(errorAnswerLength);
    if (isError(start)) {
        readErrorCode(start, result);
        return;
    }
    const std::uint64_t bytes = frameBytes(width, height);
    const char* frame = sharedData();
    if (frame == nullptr ||
        std::min(resources->dataFile.size(), resources->dataFile.lengthOnDisk()) < bytes) {
        result = answerTooShort;
        return;
    }
    Platform::copyLarge(destination, frame, bytes);
    result = 0;
}

void QuickTimeCodecReaderIPCController::completeMetadata(const std::string& answer) {
    const std::deque<std::string> fields = Property::splitFields(answer);
    for (std::size_t index = 0; index + 2 <= fields.size(); index += 2) {
        // A key that is there already keeps its first value.
        metadata.emplace(fields[index], fields[index + 1]);
    }
}

QuickTimeCodecReaderIPCController* createReaderController() {
    return new (std::nothrow) QuickTimeCodecReaderIPCController(makeBridgeName());
}

}  // namespace Morvane::QuickTime
