#pragma once

#include "Kex/Image/Export.h"

namespace Kex::Image {

/// What every registration record of a plug-in begins with. Records are static objects of the plug-in; the
/// library refers to them and never owns one. All of it happens while a plug-in is loaded or unloaded, on one
/// thread.
class KEX_IMAGE_API Description {
public:
    /// Puts a record where the host looks for it.
    using AddCallback = void (*)(Description* record);

    Description() = default;
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    /// When the plug-in was compiled and for which SDK, KEX_IMAGE_BUILD_STAMP. Set it before ctor2.
    const char* buildStamp = nullptr;

    /// Second step of a record's construction, once its fields are filled: hands it to `add`. A record
    /// without a build stamp is refused with a line on standard error, since nothing tells which SDK it was
    /// compiled for.
    void ctor2(AddCallback add);

protected:
    ~Description() = default;
};

}  // namespace Kex::Image
