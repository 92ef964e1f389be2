#include "tests/unit/writer/FakeController.h"

#include "writer/CreateController.h"

namespace Morvane::Writer {

namespace Testing {
Script* currentScript = nullptr;
}

/// Stands in place of the plug-in's own.
QuickTime::QuickTimeCodecWriterInterface* createController() {
    Testing::Script& script = *Testing::currentScript;
    return script.isMissing ? nullptr : new Testing::FakeController(script);
}

}  // namespace Morvane::Writer
