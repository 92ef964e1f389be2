#include "host/app/StartUp.h"

#include <spdlog/spdlog.h>

#include "host/render/PlugIns.h"

namespace Corvel {

Bundle startUp() {
    Bundle bundle;
    bundle.checkHelper();
    for (const PlugIn& plugIn : loadPlugIns(bundle.contents())) {
        if (!plugIn.failure.empty()) {
            spdlog::warn("the plug-in {} can't be loaded: {}", plugIn.path, plugIn.failure);
        }
    }
    return bundle;
}

}  // namespace Corvel
