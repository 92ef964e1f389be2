#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/burnin/BurnInRequest.h"
#include "host/colour/ColourRequest.h"
#include "host/geometry/GeometryRequest.h"
#include "host/images/PictureChoice.h"
#include "host/render/FramePlan.h"

namespace Corvel {

/// A value for one of the Write node's knobs, as a person wrote it.
struct KnobSetting {
    std::string knob;  ///< saved name
    std::string text;
};

/// Width and height in pixels and, where it was given, the pixel aspect.
struct FormatRequest {
    int width = 0;
    int height = 0;
    std::optional<double> pixelAspect;
};

/// What a person asks of a render. Everything that is left out is taken from the input or from the node.
struct RenderRequest {
    std::string input;
    PictureChoice choice;  ///< of the pictures that the input's files have
    std::string output;
    std::vector<int> frames;  ///< ascending; empty for all
    Missing missing = Missing::Error;
    FrameOrder order;
    std::optional<int> channels;  ///< 3 or 4
    std::optional<FormatRequest> format;
    GeometryRequest geometry;
    BurnInRequest burnIns;
    std::string lut;       ///< name of the curve of the movie's values; empty for the writer's own
    std::string inputLut;  ///< name of the curve of the input's values; empty for the files' own statement
    ColourRequest colour;
    bool overwrite = false;
    bool dryRun = false;
    std::optional<std::chrono::seconds> helperTimeout;  ///< without a sign of life; none: for ever
    unsigned threads = 0;  ///< that read frames and encode; 0 for as many as the machine has
    std::vector<KnobSetting> knobs;
    bool advanced = false;  ///< press the button of that name
    std::string timecode;
    std::string reel;
    std::vector<std::pair<std::string, std::string>> metadata;
};

}  // namespace Corvel
