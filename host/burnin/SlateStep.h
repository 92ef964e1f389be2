#pragma once

#include <memory>

#include "host/burnin/BurnInStep.h"
#include "host/burnin/Template.h"
#include "host/images/PictureStep.h"

namespace Corvel {

/// The step that makes a slate of the picture of the movie's first position: the picture itself becomes the
/// thumbnail on it. Leaves other pictures alone. Throws std::runtime_error where the text library cannot be
/// loaded.
std::unique_ptr<PictureStep> makeSlateStep(const SlateTemplate& slate, const BurnInContext& context);

}  // namespace Corvel
