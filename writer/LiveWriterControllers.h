#pragma once

#include <set>

#include "quicktime/QuickTimeCodecWriterInterface.h"

namespace Morvane::Writer {

/// The controllers of all writers that are alive, so that no worker process outlives the plug-in.
///
/// A controller in here has two owners, deliberately: its writer, and this registry, which deletes what is
/// left when the plug-in is unloaded, for a host that never destroys a writer. Whichever comes first deletes
/// it; a writer takes its controller out before it does. The host makes and destroys writers, and unloads, on
/// one thread.
class LiveWriterControllers {
public:
    LiveWriterControllers() = default;
    LiveWriterControllers(const LiveWriterControllers&) = delete;
    LiveWriterControllers& operator=(const LiveWriterControllers&) = delete;

    /// Deletes every controller still in the registry, which stops its worker and waits for it. Does not
    /// throw: a worker that is gone already keeps none of the others alive.
    ~LiveWriterControllers();

    void insert(QuickTime::QuickTimeCodecWriterInterface* controller) { controllers.insert(controller); }
    /// Takes the controller out without deleting it.
    void remove(QuickTime::QuickTimeCodecWriterInterface* controller) { controllers.erase(controller); }

    const std::set<QuickTime::QuickTimeCodecWriterInterface*>& all() const { return controllers; }

private:
    std::set<QuickTime::QuickTimeCodecWriterInterface*> controllers;
};

/// The one registry of the plug-in: made when it is loaded, destroyed when it is unloaded.
extern LiveWriterControllers liveWriterControllers;

}  // namespace Morvane::Writer
