#include "host/render/PictureSteps.h"

#include <fmt/format.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>

#include "host/geometry/GeometrySteps.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

Window sourceWindow(const RenderRequest& request, const PictureHeader& header) {
    if (!request.geometry.crop) {
        return {0, 0, header.display.width, header.display.height};
    }
    try {
        return croppedWindow(*request.geometry.crop, header.display.width, header.display.height);
    } catch (const std::invalid_argument& fault) {
        throw Failure(Exit::Usage, fault.what());
    }
}

std::optional<Placement> placementFor(const RenderRequest& request, const PictureHeader& header,
                                      const Raster& movie) {
    const GeometryRequest& geometry = request.geometry;
    if (!request.format && !geometry.crop) {
        return std::nullopt;
    }
    return placementOf({header.display.width, header.display.height, header.pixelAspect},
                       sourceWindow(request, header), movie, geometry.fit.value_or(Fit::LowerLeft));
}

}  // namespace

Kex::Image::Format formatFor(const RenderRequest& request, const PictureHeader& header) {
    const std::optional<Fit>& fit = request.geometry.fit;
    const Window source = sourceWindow(request, header);
    Kex::Image::Format format(source.width, source.height, header.pixelAspect);
    if (const auto& wanted = request.format) {
        // Pictures that are scaled need not keep the shape of their pixels.
        const bool scaled = fit && *fit != Fit::LowerLeft && *fit != Fit::Crop;
        const double aspect = scaled ? 1 : header.pixelAspect;
        format = {wanted->width, wanted->height, wanted->pixelAspect.value_or(aspect)};
    } else if (fit) {
        throw Failure(Exit::Usage, "--fit says how pictures come into --format, which is not given");
    }
    if (frameBytes(format) > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
        throw Failure(Exit::InputUnreadable,
                      fmt::format("a picture of {} x {} pixels takes more than 2 GiB as floats",
                                  format.width(), format.height()));
    }
    return format;
}

MakePictureSteps stepsFor(const RenderRequest& request, const PictureHeader& header, const RenderPlan& plan) {
    const Raster movie{plan.format.width(), plan.format.height(), plan.format.pixelAspect()};
    const std::optional<Placement> placement = placementFor(request, header, movie);
    const GeometryRequest& geometry = request.geometry;
    if (!placement && !geometry.mask) {
        return {};
    }
    return [placement, geometry, movie] {
        PictureSteps steps;
        if (placement) {
            steps.push_back(makePlacementStep(*placement, geometry.filter));
        }
        if (geometry.mask) {
            steps.push_back(makeMaskStep(seenThrough(*geometry.mask, movie), geometry.mask->opacity));
        }
        return steps;
    };
}

}  // namespace Corvel
