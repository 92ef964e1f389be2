#include "host/render/PictureSteps.h"

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "host/colour/ColourStep.h"
#include "host/colour/ColourWatch.h"
#include "host/geometry/GeometrySteps.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

// Makes one step for one reading thread.
using MakeStep = std::function<std::unique_ptr<PictureStep>()>;

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

std::vector<MakeStep> geometryFor(const RenderRequest& request, const PictureHeader& header,
                                  const RenderPlan& plan) {
    const Raster movie{plan.format.width(), plan.format.height(), plan.format.pixelAspect()};
    const GeometryRequest& geometry = request.geometry;
    std::vector<MakeStep> makers;
    if (const std::optional<Placement> placement = placementFor(request, header, movie)) {
        makers.emplace_back([placement = *placement, filter = geometry.filter] {
            return makePlacementStep(placement, filter);
        });
    }
    if (geometry.mask) {
        makers.emplace_back(
            [mask = *geometry.mask, movie] { return makeMaskStep(seenThrough(mask, movie), mask.opacity); });
    }
    return makers;
}

MakeStep colourMaker(const ColourConversion& conversion, ColourConversion::Part part) {
    return [transform = conversion.transform(part)] { return makeColourStep(transform); };
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
    using Part = ColourConversion::Part;
    const std::vector<MakeStep> geometry = geometryFor(request, header, plan);
    std::vector<MakeStep> makers;
    if (header.floatingPoint) {
        makers.emplace_back([broken = plan.broken] { return makeMendingStep(broken); });
    }
    if (plan.colour) {
        makers.emplace_back(
            [watch = std::make_shared<ColourWatch>(plan.colour, header)] { return makeWatchingStep(watch); });
    }
    if (plan.colour && !geometry.empty()) {
        makers.push_back(colourMaker(*plan.colour, Part::ToLight));
    }
    makers.insert(makers.end(), geometry.begin(), geometry.end());
    if (plan.colour) {
        makers.push_back(colourMaker(*plan.colour, geometry.empty() ? Part::Whole : Part::FromLight));
    }
    if (makers.empty()) {
        return {};
    }
    return [makers] {
        PictureSteps steps;
        for (const MakeStep& make : makers) {
            steps.push_back(make());
        }
        return steps;
    };
}

}  // namespace Corvel
