#pragma once

#include <map>
#include <string>

#include "Kex/Image/Write.h"
#include "host/burnin/FieldText.h"
#include "host/images/PictureStep.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// The values of the fields that templates name, for one render. Immutable; any thread. Request and plan must
/// outlive it.
class ShotFields {
public:
    /// `node` is the Write node with all its knobs settled, null for images.
    ShotFields(const RenderRequest& request, const RenderPlan& plan, const Kex::Image::Write* node);

    /// The value of a field at that frame; empty for what is not known.
    FieldValue valueOf(const FrameUnderWay& frame, const std::string& field,
                       const std::string& argument) const;

private:
    void addFrames();
    void addCodec(const Kex::Image::Write* node);
    void addPlace();
    std::string timecodeAt(std::size_t position) const;
    std::string fileAt(std::size_t position) const;
    std::string metadata(const PictureHeader& header, const std::string& key) const;

    const RenderRequest& request;
    const RenderPlan& plan;
    int timecodeRate = 24;  // whole frames a second, as time codes count
    std::map<std::string, FieldValue> constant;
};

/// The name of a shot out of its input's: without folder, frame number and ending. "shots/sh010.####.exr" is
/// "sh010".
std::string shotNameOf(const std::string& input);

}  // namespace Corvel
