#pragma once

#include <string>

#include "worker/LibavPointers.h"

namespace Morvane::Worker {

/// A decoder for `stream`, with as many threads as there are cores. `path` is for messages. Throws
/// StatusError (CodecFailed, NoMemory).
CodecPointer openDecoder(const AVStream& stream, const std::string& path);

/// Whether every packet of `codec` is a picture of its own.
bool isIntraOnly(AVCodecID codec);

}  // namespace Morvane::Worker
