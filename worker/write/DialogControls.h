#pragma once

#include <string>

#include "worker/codec/CodecTable.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/dialog/DialogInterface.h"

namespace Morvane::Worker {

/// What the dialog shows of a codec: a control for each key of its settings that can have more than one
/// value, with libav's own description of the encoder's option where there is one.
DialogCodec dialogCodec(const Codec& codec);

/// What will be made, in sentences.
std::string planInWords(const EncodingPlan& plan, int quality);

}  // namespace Morvane::Worker
