#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Kex/Image/Format.h"
#include "host/burnin/Template.h"
#include "host/colour/BrokenPixels.h"
#include "host/colour/ColourLibrary.h"
#include "host/images/FrameSource.h"
#include "host/render/FramePlan.h"
#include "host/render/ReadAhead.h"
#include "host/render/RenderRequest.h"

namespace Kex::Image {
class LUT;
}

namespace Corvel {

/// Everything about a render that can be settled without the Write node.
struct RenderPlan {
    std::unique_ptr<FrameSource> source;
    std::vector<PlannedFrame> frames;                ///< at least one
    std::optional<BurnInTemplate> burnIn;            ///< written over every picture
    std::optional<SlateTemplate> slate;              ///< what the first of the frames is then
    Window picture;                                  ///< size that every frame of the input must have
    MakePictureSteps steps;                          ///< what is done to each picture before it is written
    std::shared_ptr<const ColourConversion> colour;  ///< null without colour management
    std::shared_ptr<BrokenPixels> broken = std::make_shared<BrokenPixels>();  ///< counted by the steps
    Kex::Image::Format format;                                                ///< of the movie
    int depth = 3;                                                            ///< channels
    const Kex::Image::LUT* lut = nullptr;                                     ///< null for the writer's own
    std::string picked;  ///< which channels of the input's files are read, for people
    Metadata metadata;   ///< of the movie, as files and the person say
    /// Frames of the movie before the one whose header gave the time code; that one is not the first where
    /// the first ones are missing.
    int timecodeLead = 0;
    /// Whether the input's time code becomes a track unasked: a movie's does, so that it is not lost on the
    /// way.
    bool carriesTimecode = false;
};

/// Opens the input; `curve` is what its values mean, null for its own statement.
using OpenInput = std::function<std::unique_ptr<FrameSource>(const Kex::Image::LUT* curve)>;

/// Looks at the input and the output as far as that is possible without reading pixels; opens the input once
/// the rest of the request has turned out well. Throws Failure, NoSuchInput and UnreadableImage.
RenderPlan planRender(const RenderRequest& request, const OpenInput& openInput);

/// How far the frames of the plan are read ahead.
ReadAhead::Limits readAheadLimits(const RenderRequest& request, const RenderPlan& plan);

/// What stands for a frame that the input does not have: the header of a picture of its size that is black
/// and, where the movie has alpha, transparent.
PictureHeader blankHeader(const RenderPlan& plan);

/// Bytes that one frame takes between host and helper.
std::uint64_t frameBytes(const Kex::Image::Format& format);

}  // namespace Corvel
