#include "host/colour/ColourWatch.h"

#include <spdlog/spdlog.h>

#include <string>
#include <utility>

namespace Corvel {
namespace {

bool stateTheSame(const PictureHeader& one, const PictureHeader& other) {
    return one.colourSpace == other.colourSpace && one.chromaticities == other.chromaticities &&
           one.curve == other.curve && one.floatingPoint == other.floatingPoint;
}

// A black frame in a gap has a header that states nothing.
bool isFromFile(const PictureHeader& header) {
    return !header.curve.empty();
}

class WatchingStep : public PictureStep {
public:
    explicit WatchingStep(std::shared_ptr<ColourWatch> shared) : watch(std::move(shared)) {}

    void apply(const FrameUnderWay& frame, Picture&) override { watch->look(frame); }

private:
    const std::shared_ptr<ColourWatch> watch;
};

}  // namespace

ColourWatch::ColourWatch(std::shared_ptr<const ColourConversion> used, PictureHeader firstHeader)
    : conversion(std::move(used)), first(std::move(firstHeader)) {}

void ColourWatch::look(const FrameUnderWay& frame) {
    if (told || !isFromFile(frame.header) || stateTheSame(frame.header, first)) {
        return;
    }
    const std::string taken = conversion->inputSpace();
    const std::string stated = conversion->spaceOf(frame.header);
    if (stated != taken && !told.exchange(true)) {
        spdlog::warn(
            "frame {} is {} by its header and taken for {}, as the first frame is and all are; --input-space "
            "says what they are",
            frame.number, stated, taken);
    }
}

std::unique_ptr<PictureStep> makeWatchingStep(std::shared_ptr<ColourWatch> watch) {
    return std::make_unique<WatchingStep>(std::move(watch));
}

}  // namespace Corvel
