#pragma once

#include <string>
#include <vector>

#include "host/render/Console.h"
#include "host/render/Failure.h"
#include "host/render/FramePlan.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// What a person asks of playing.
struct PlayRequest {
    std::string input;
    PictureChoice choice;     ///< of the pictures that the input's files have
    std::vector<int> frames;  ///< ascending; empty for all
    Missing missing = Missing::Error;
    std::string device;
    std::string mode;
    bool loop = false;
    bool fullScreen = false;
    std::string lut;       ///< name of the curve of the output's values; empty for sRGB
    std::string inputLut;  ///< name of the curve of the input's values; empty for the files' own statement
    unsigned threads = 0;  ///< that read frames; 0 for as many as the machine has
};

/// Shows the frames on the video output, at the mode's rate, and blocks until the last one has been shown.
/// Closing the output's window is a normal end. Throws Failure, NoSuchInput and UnreadableImage.
Exit play(const PlayRequest& request, Console& console, Reporter& reporter);

}  // namespace Corvel
