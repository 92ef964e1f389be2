#pragma once

#include <memory>

#include "host/burnin/TextLibrary.h"

namespace Corvel {

/// Text by Pango (shaping, fonts) and Cairo (drawing), with the fonts that fontconfig finds.
std::unique_ptr<TextDrawer> makePangoDrawer();

}  // namespace Corvel
