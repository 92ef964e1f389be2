#include "host/render/BurnIns.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Kex/Image/LUT.h"
#include "host/burnin/BurnInStep.h"
#include "host/burnin/FieldNames.h"
#include "host/burnin/SlateStep.h"
#include "host/render/Failure.h"
#include "host/render/ShotFields.h"

namespace Corvel {
namespace {

// Those of the program and those that the person made up.
std::vector<std::string> knownFields(const BurnInRequest& request) {
    std::vector<std::string> names = fieldNames();
    for (const auto& [field, value] : request.fields) {
        if (std::find(names.begin(), names.end(), field) == names.end()) {
            names.push_back(field);
        }
    }
    return names;
}

// Images get their file format's curve, and floats are looked at through the usual one. A linear curve is
// none: the values are the display's already.
const Kex::Image::LUT* curveFor(const RenderPlan& plan, const Kex::Image::Write* node) {
    const Kex::Image::LUT* const curve =
        node != nullptr ? node->lut() : (plan.lut != nullptr ? plan.lut : Kex::Image::LUT::find("srgb"));
    return curve != nullptr && curve->type() != 0 ? curve : nullptr;
}

// Where displays that are far brighter than paper have it: 203 cd/m2 (ITU-R BT.2408).
float whiteFor(const RenderPlan& plan) {
    const std::string transfer = plan.colour ? plan.colour->tags().transfer : "";
    return transfer == "smpte2084" ? 0.5807F : transfer == "arib-std-b67" ? 0.75F : 1.0F;
}

}  // namespace

std::optional<BurnInTemplate> planBurnIns(const BurnInRequest& request) {
    if (request.burnIn.empty() && request.texts.empty()) {
        return std::nullopt;
    }
    try {
        const std::vector<std::string> known = knownFields(request);
        BurnInTemplate burnIn = request.burnIn.empty() ? BurnInTemplate() : loadBurnIn(request.burnIn, known);
        for (const std::string& text : request.texts) {
            burnIn.labels.push_back(labelFrom(text, known));
        }
        return burnIn;
    } catch (const BadTemplate& fault) {
        throw Failure(Exit::Usage, fault.what());
    }
}

std::optional<SlateTemplate> planSlate(const BurnInRequest& request) {
    if (request.slate.empty()) {
        return std::nullopt;
    }
    try {
        return loadSlate(request.slate, knownFields(request));
    } catch (const BadTemplate& fault) {
        throw Failure(Exit::Usage, fault.what());
    }
}

void addSlateFrame(RenderPlan& plan) {
    std::vector<int> there;
    for (const PlannedFrame& frame : plan.frames) {
        if (!frame.isFilled()) {
            there.push_back(frame.shown);
        }
    }
    const int pictured = there[there.size() / 2];
    plan.frames.insert(plan.frames.begin(), {plan.frames.front().number - 1, pictured, pictured});
    ++plan.timecodeLead;
}

void addBurnIns(const RenderRequest& request, RenderPlan& plan, const Kex::Image::Write* node) {
    if (!plan.burnIn && !plan.slate) {
        return;
    }
    textLibrary();  // says what is wrong with it here rather than on the reading threads
    const auto fields = std::make_shared<const ShotFields>(request, plan, node);
    const BurnInContext context{
        {curveFor(plan, node), whiteFor(plan)},
        plan.format.pixelAspect(),
        [fields](const FrameUnderWay& frame, const std::string& field, const std::string& argument) {
            return fields->valueOf(frame, field, argument);
        },
        std::make_shared<FontFaults>()};
    plan.steps = [before = std::move(plan.steps), context, burnIn = plan.burnIn, slate = plan.slate] {
        PictureSteps steps = before ? before() : PictureSteps();
        if (burnIn) {
            steps.push_back(makeBurnInStep(*burnIn, context, slate.has_value()));
        }
        if (slate) {
            steps.push_back(makeSlateStep(*slate, context));
        }
        return steps;
    };
}

}  // namespace Corvel
