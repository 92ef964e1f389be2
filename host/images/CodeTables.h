#pragma once

#include "Kex/Image/CodeTable.h"

namespace Corvel {

/// The tables of pictures that have codes (Picture.h). Each is made when it is first asked for and stays as
/// long as the program. Any thread. They throw std::bad_alloc.

/// Half floats by their bits (IEEE 754 binary16).
const Kex::Image::CodeTable& halfFloats();

/// Whole numbers from 0 to `highest`, at most 65535, which stands for 1 before the curve is taken off.
const Kex::Image::CodeTable& wholeNumbers(unsigned highest, const Kex::Image::LUT& curve);

}  // namespace Corvel
