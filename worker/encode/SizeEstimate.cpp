#include "worker/encode/SizeEstimate.h"

#include "worker/encode/SamplePicture.h"
#include "worker/encode/VideoEncoder.h"

#include <cstdint>

namespace Morvane::Worker {

namespace {

/// Enough for pictures that refer to each other to show what they save.
constexpr int framesInGroup = 12;
constexpr int framesAlone = 2;

}  // namespace

double estimateBytesPerPixel(const EncodingPlan& plan) {
    std::int64_t bytes = 0;
    const bool alone = plan.codec->intraOnly || plan.keyFrameRate == 1;
    const int frames = alone ? framesAlone : framesInGroup;
    VideoEncoder encoder(plan);
    encoder.start([&bytes](AVPacket& packet) { bytes += packet.size; });
    for (int frame = 0; frame < frames; ++frame)
        encoder.addFrame(naturalPicture(plan.width, plan.height, frame, plan.sourceHasAlpha).data());
    encoder.finish();
    return static_cast<double>(bytes) / (static_cast<double>(plan.width) * plan.height * frames);
}

}  // namespace Morvane::Worker
