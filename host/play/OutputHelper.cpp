#include "host/play/OutputHelper.h"

#include <spdlog/spdlog.h>

#include <exception>

#include "quicktime/QuickTimeVideoOutputIPCController.h"

namespace Corvel {

using Morvane::QuickTime::createVideoOutputController;

OutputHelper::OutputHelper(HelperKeeper& keeper) : keeper(keeper) {
    keeper.start([this] { controller.reset(createVideoOutputController()); });
}

OutputHelper::OutputHelper(Morvane::QuickTime::VideoOutputHandle device, const std::string& name,
                           HelperKeeper& keeper)
    : keeper(keeper) {
    keeper.start([&] { controller.reset(createVideoOutputController(device, name)); });
}

OutputHelper::~OutputHelper() {
    keeper.expectEnd();
    try {
        // Not by the smart pointer's own destructor: stopping a helper that has gone already throws.
        delete controller.release();
    } catch (const std::exception& error) {
        spdlog::warn("while stopping the QuickTime helper: {}", error.what());
    }
}

}  // namespace Corvel
