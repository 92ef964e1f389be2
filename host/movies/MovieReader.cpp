#include "host/movies/MovieReader.h"

#include <fmt/format.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

#include "host/images/ImageReader.h"
#include "host/render/Failure.h"
#include "quicktime/QuickTimeCodecReaderIPCController.h"
#include "timecode/FrameRate.h"

namespace Corvel {
namespace {

using Morvane::QuickTime::QuickTimeCodecReaderInterface;

constexpr std::int32_t framesWanted = 1;
constexpr std::int32_t descriptionOnly = 0;

}  // namespace

double MovieFacts::pixelAspect() const {
    return aspectNumerator > 0 && aspectDenominator > 0
               ? static_cast<double>(aspectNumerator) / static_cast<double>(aspectDenominator)
               : 1.0;
}

int MovieFacts::timecodeRate() const {
    const int counted = std::atoi(text("quicktime/timecode_rate").c_str());
    return counted > 0
               ? counted
               : static_cast<int>(Morvane::Timecode::toFrameRateCode(static_cast<float>(rate)).nominalRate());
}

std::string MovieFacts::text(const std::string& key) const {
    const auto found = metadata.find(key);
    return found == metadata.end() ? "" : found->second;
}

void MovieReader::StopHelper::operator()(QuickTimeCodecReaderInterface* stopped) const {
    keeper->expectEnd();
    try {
        delete stopped;
    } catch (const std::runtime_error&) {
        // It had ended by itself; the frames that were asked for are here all the same.
    }
}

MovieReader::MovieReader(const std::string& moviePath, Purpose purpose, HelperKeeper& helperKeeper)
    : path_(moviePath), keeper(helperKeeper), controller(nullptr, StopHelper{&helperKeeper}) {
    helper = keeper.start([this] {
        controller.reset(Morvane::QuickTime::createReaderController());
        if (!controller) {
            throw std::bad_alloc();
        }
    });
    keeper.setActivity("opening " + path_);
    const std::int32_t mode = purpose == Purpose::Frames ? framesWanted : descriptionOnly;
    if (const std::int32_t status = controller->openFile(path_, mode); status != 0) {
        throw Failure(Exit::InputUnreadable,
                      fmt::format("cannot read the movie {} (status {})", path_, status));
    }
    readFacts();
}

MovieReader::~MovieReader() = default;

void MovieReader::readFacts() {
    std::int32_t width = 0, height = 0, channels = 0, numerator = 0, denominator = 0, bits = 0;
    float rate = 0;
    controller->getInfo(width, height, channels, rate, numerator, denominator, bits);
    if (width < 1 || height < 1) {
        throw Failure(Exit::InputUnreadable, fmt::format("the movie {} has no pictures", path_));
    }
    facts_ = {width, height, channels, bits, controller->getFrameCount(), rate, numerator, denominator, {}};
    controller->getMetadata(facts_.metadata);
}

std::vector<std::pair<std::string, std::string>> MovieReader::properties() {
    Morvane::Property::PropertyList list;
    keeper.setActivity("listing the tracks of " + path_);
    controller->getProperties(list);
    std::vector<std::pair<std::string, std::string>> named;
    for (const auto& property : list) {
        named.emplace_back(property->name, property->toString());
    }
    return named;
}

void MovieReader::readFrame(int number, float* pixels) {
    keeper.setOwnActivity(helper, fmt::format("reading frame {} of {}", number + 1, path_));
    const std::int32_t status = controller->readFrame(number, reinterpret_cast<char*>(pixels));
    if (status != 0) {
        throw UnreadableImage(
            fmt::format("cannot read frame {} of {} (status {})", number + 1, path_, status));
    }
}

}  // namespace Corvel
