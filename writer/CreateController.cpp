#include "writer/CreateController.h"

#include "quicktime/QuickTimeCodecWriterIPCController.h"

namespace Morvane::Writer {

QuickTime::QuickTimeCodecWriterInterface* createController() {
    return QuickTime::createWriterController();
}

}  // namespace Morvane::Writer
