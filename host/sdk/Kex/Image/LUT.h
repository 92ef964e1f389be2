#pragma once

#include <cstddef>
#include <string>

#include "Kex/Image/Export.h"

namespace Kex::Image {

/// A transfer curve between linear light and the values that a file stores. Both sides have nominal range 0
/// to 1 and nothing is clamped: values above 1 follow the curve's formula, values below 0 its mirror image
/// through black. NaN stays NaN and infinities stay infinite.
///
/// | type | name     | stored value of linear light x, for x >= 0          | source          |
/// |------|----------|-----------------------------------------------------|-----------------|
/// | 0    | linear   | x                                                   |                 |
/// | 1    | rec709   | x <= 0.018: 4.5 x, else 1.099 x^0.45 - 0.099        | ITU-R BT.709-6  |
/// | 2    | gamma1.8 | x^(1/1.8)                                           |                 |
/// | 3    | gamma2.2 | x^(1/2.2)                                           |                 |
/// | 4    | gamma2.4 | x^(1/2.4)                                           | ITU-R BT.1886   |
/// | 5    | cineon   | (685 + 300 log10(x (1 - k) + k)) / 1023             | printing        |
/// |      |          | with k = 10^((95 - 685) / 300)                      | density of film |
/// | 6    | srgb     | x <= 0.0031308: 12.92 x, else 1.055 x^(1/2.4) - 0.055 | IEC 61966-2-1 |
///
/// The mirror image of f is -f(-x), and for cineon, whose black is not 0, 2 f(0) - f(-x). Curves are
/// immutable, live as long as the library and may be used by any number of threads.
class KEX_IMAGE_API LUT {
public:
    /// How many curves there are.
    static constexpr std::size_t count = 7;

    /// The curve of that type, null for a type that is not in the table.
    static const LUT* getLut(int type);
    /// The curve of that name (letter case counts), null when there is none.
    static const LUT* find(const std::string& name);

    virtual ~LUT() = default;

    int type() const { return type_; }
    const char* name() const { return name_; }

    /// The formula, in double precision: stored value of linear light.
    virtual double toStored(double linear) const = 0;
    /// Its inverse: linear light of a stored value.
    virtual double toLinear(double stored) const = 0;

    /// The formula for `count` samples in a row: reads from[0], from[1], …, writes to[0], to[stride], to[2
    /// stride], …. Exact to 1e-6, relative above 1. `stride` is in floats, at least 1; floats in between keep
    /// their values, but are written back, so that only one thread at a time may work on such an interleaved
    /// row. `to` and `from` do not overlap, unless they are equal and the stride is 1.
    virtual void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const = 0;
    /// The inverse for `count` samples, likewise.
    virtual void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const = 0;

protected:
    LUT(int number, const char* text) : type_(number), name_(text) {}

private:
    int type_;
    const char* name_;
};

}  // namespace Kex::Image
