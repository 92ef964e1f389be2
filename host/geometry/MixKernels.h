#pragma once

#include <cstddef>

namespace Corvel {

/// The loops of resampling. Weights are `taps` floats; `held` keeps each result between the smallest and the
/// largest of its samples. Results never overlap what they are made of.

/// Mixes rows of three or four planes: rows[tap * 4 + plane] is a row of `count` floats, of plane 3 null
/// everywhere when there are three. The result is interleaved, `count` x 4 floats; a fourth plane that is not
/// there becomes 0.
void mixRows(const float* const* rows, const float* weights, int taps, bool held, std::size_t count,
             float* mixed);

/// Mixes pixels of 4 floats: pixel i of the result is made of `taps` pixels from firsts[i] on, with the
/// weights from i * taps on.
void mixPixels(const float* pixels, const int* firsts, const float* weights, int taps, bool held,
               std::size_t count, float* mixed);

}  // namespace Corvel
