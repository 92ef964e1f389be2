#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Kex/Image/Application.h"
#include "Kex/Image/Write.h"
#include "host/render/HelperSession.h"
#include "host/render/PictureNode.h"

namespace Corvel {

/// The application that a Write node runs in: makes the node and what it reads, passes its messages on to the
/// log, and starts its helper. One thread, the one that made it.

class NodeHost : private Kex::Image::Application {
public:
    /// Called within a frame: how much of it is done, 0 to 1.
    using FrameFraction = std::function<void(double)>;

    /// Makes the node for that output and starts the helper. Throws Failure: Usage when no plug-in writes
    /// such files, HelperFailed when the helper can't be started.
    NodeHost(const std::string& output, const Kex::Image::Format& format, int depth, HelperSession& session);
    /// Stops the helper and waits for it.
    ~NodeHost() noexcept override;

    Kex::Image::Write& node() { return *node_; }
    /// What the node reads.
    PictureNode& picture() { return picture_; }
    HelperSession& helper() { return helper_; }

    void onFrameFraction(FrameFraction newFraction) { fraction = std::move(newFraction); }

private:
    void error(const Kex::Image::Op& op, const std::string& text) override;
    void warning(const Kex::Image::Op& op, const std::string& text) override;
    void progress(const Kex::Image::Op& op, double part) override;
    /// Since the second request to stop.
    bool aborted(const Kex::Image::Op& op) override;

    FrameFraction fraction;
    HelperSession& helper_;
    PictureNode picture_;
    std::unique_ptr<Kex::Image::Write> node_;
};

}  // namespace Corvel
