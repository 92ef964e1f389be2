#pragma once

#include <string>
#include <vector>

#include "Kex/Image/Write.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

class PictureNode;

/// Turns the knobs of a Write node as a person would, in the order that a panel calls for, and adds what no
/// request to the helper carries. Knobs that the host itself knows the meaning of are named in the source of
/// this file alone.
///
/// In this order: the codec, which clears the settings; every other knob that was given; the input's frame
/// rate, unless one was given; the settings; the time code's switch; the "advanced" button; then the
/// additions to the settings:
/// - `aspect=N/D`, the pixel aspect, when the node is to use the format's;
/// - `threads`, when their number was given;
/// - `transfer`, when a curve was chosen that has a name there; under colour management, `colour`,
/// `primaries`
///   and `transfer` of the display;
/// - `curve`, the curve of the movie's values, when the settings ask for straight alpha;
/// - `timecode` and `reel`, when a time code is to be written, so that a movie that is cut off by a crash has
/// them
///   already: the track itself is only made at the end;
/// - `meta.KEY` for each piece of metadata that was given.
/// Each one only where the settings have no such key. Throws BadKnobValue and Failure (Usage).
///
/// The metadata that the node reads, `plan.metadata`, are settled on the way and given to `picture`.
void applySettings(Kex::Image::Write& node, PictureNode& picture, const RenderRequest& request,
                   RenderPlan& plan);

/// Turns knobs in the order that a panel calls for: the codec, which clears the settings; every other knob
/// as it was given; the settings. Throws BadKnobValue; the knobs before that one are turned then.
void applyKnobs(Kex::Image::Write& node, const std::vector<KnobSetting>& settings);

/// Turns the knobs that an input decides where nobody else does, as a render would: the frame rate, and the
/// time code's switch for a movie that has one.
void takeFromInput(Kex::Image::Write& node, const Metadata& metadata, bool isMovie);

/// A pixel aspect as a fraction of small numbers, such as "12/11".
std::string aspectFraction(double aspect);

}  // namespace Corvel
