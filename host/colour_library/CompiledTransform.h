#pragma once

#include <OpenColorIO/OpenColorIO.h>

#include <memory>

#include "host/colour/ColourLibrary.h"

namespace Corvel {

/// The library's processor as a ColourTransform that takes a small part of its time: matrices are applied to
/// whole rows, what each colour goes through by itself becomes a table (CurveTable), and only the rest, such
/// as three-dimensional tables, is left to the library. Compared with the library on a few thousand colours
/// before it is used; where it differs, the library does all of it. Throws OCIO::Exception.
std::shared_ptr<const ColourTransform> compileTransform(const OCIO_NAMESPACE::ConstProcessorRcPtr& processor);

}  // namespace Corvel
