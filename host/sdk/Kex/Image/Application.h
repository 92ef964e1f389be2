#pragma once

#include <string>

#include "Kex/Image/Export.h"

namespace Kex::Image {

class Op;

/// What an application does for the nodes that it runs. The application implements it once and gives it to
/// every node it makes; it must outlive them. All calls come on the thread that called into the node.
class KEX_IMAGE_API Application {
public:
    virtual ~Application() = default;

    /// A node failed. `text` is the node's own, a line break at its end included where the node wrote one.
    virtual void error(const Op& op, const std::string& text) = 0;
    /// A node has something to say and goes on.
    virtual void warning(const Op& op, const std::string& text) = 0;
    /// How much of the node's current frame is done, 0 to 1. Called often: once a row.
    virtual void progress(const Op& op, double fraction) = 0;
    /// Whether the current frame should be given up. Called once a row.
    virtual bool aborted(const Op& op) = 0;
};

}  // namespace Kex::Image
