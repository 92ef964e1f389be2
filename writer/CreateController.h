#pragma once

#include "quicktime/QuickTimeCodecWriterInterface.h"

namespace Morvane::Writer {

/// A new controller with a worker of its own, owned by the caller; null when none can be made. Throws
/// std::runtime_error when the worker cannot be launched. The only place of the plug-in that knows which
/// implementation of the interface there is.
QuickTime::QuickTimeCodecWriterInterface* createController();

}  // namespace Morvane::Writer
