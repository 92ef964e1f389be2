#include "host/render/RenderSetup.h"

#include <fmt/format.h>

#include <cstdint>

#include "host/images/ImageSequence.h"
#include "host/movies/MovieSource.h"
#include "host/render/BurnIns.h"
#include "host/render/NodeSettings.h"

namespace Corvel {
namespace {

// The size of a movie's frames isn't known before a helper has opened it.
constexpr std::uint64_t roomForAnyFrame = std::uint64_t{1} << 30;

std::unique_ptr<HelperSession> startSession(std::uint64_t bytes, const RenderRequest& request,
                                            Reporter& reporter) {
    auto helpers = std::make_unique<HelperSession>(bytes, reporter);
    helpers->setTimeout(request.helperTimeout);
    return helpers;
}

}  // namespace

RenderSetup setUpRender(const RenderRequest& request, Reporter& reporter) {
    RenderSetup setup;
    const bool fromMovie = isMovieName(request.input);
    if (fromMovie) {
        setup.helpers = startSession(roomForAnyFrame, request, reporter);
    }
    setup.plan = planRender(request, [&](const Kex::Image::LUT* curve) -> std::unique_ptr<FrameSource> {
        if (fromMovie) {
            return std::make_unique<MovieSource>(moviePath(request.input, request.choice), curve,
                                                 *setup.helpers);
        }
        return std::make_unique<ImageSequence>(request.input, curve, request.choice);
    });
    setup.plan.carriesTimecode = fromMovie && setup.plan.metadata.count("input/timecode") != 0;
    if (!setup.helpers) {
        setup.helpers = startSession(frameBytes(setup.plan.format), request, reporter);
    }
    return setup;
}

std::unique_ptr<NodeHost> setUpNode(const RenderRequest& request, const std::string& output,
                                    RenderSetup& setup) {
    RenderPlan& plan = setup.plan;
    auto host = std::make_unique<NodeHost>(output, plan.format, plan.depth, *setup.helpers);
    if (plan.lut != nullptr) {
        host->node().setLut(plan.lut);
    }
    if (request.advanced) {
        // As long as the person takes, which is no sign of a helper in trouble.
        host->helper().setIdle("waiting for the settings dialog");
    } else {
        host->helper().setActivity("setting up");
    }
    applySettings(host->node(), host->picture(), request, plan);
    addBurnIns(request, plan, &host->node());
    return host;
}

void checkSize(const RenderPlan& plan, const PlannedFrame& frame, const PictureHeader& header) {
    const Window& display = header.display;
    if (display.width != plan.picture.width || display.height != plan.picture.height) {
        throw UnreadableImage(fmt::format("{} has {} x {} pixels, not {} x {} as the first frame",
                                          plan.source->nameOf(frame.source.value_or(frame.number)),
                                          display.width, display.height, plan.picture.width,
                                          plan.picture.height));
    }
}

}  // namespace Corvel
