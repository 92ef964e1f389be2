#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "Kex/Image/Export.h"
#include "Kex/Image/LUT.h"

namespace Kex::Image {

/// What the codes of a file mean: for each one its linear light. A file that stores few different values may
/// be shown by its codes as they are, so that nothing is calculated for a sample that can be looked up.
///
/// Immutable; any thread.
class KEX_IMAGE_API CodeTable {
public:
    using Code = std::uint16_t;

    /// `linear` has the linear light of code 0, 1, …, at most 65536 of them. Throws std::bad_alloc.
    explicit CodeTable(std::vector<float> linear);
    CodeTable(const CodeTable&) = delete;
    CodeTable& operator=(const CodeTable&) = delete;

    /// How many codes have a meaning: those below it.
    std::size_t size() const { return values.size(); }
    /// The linear light of each code.
    const float* linear() const { return values.data(); }
    /// For each code what `curve` stores for its linear light, the same to the bit as `curve.toStored`.
    /// Calculated when it is first asked for. Throws std::bad_alloc.
    const float* stored(const LUT& curve) const;

private:
    struct OfCurve {
        std::once_flag once;
        std::vector<float> values;
    };

    const std::vector<float> values;
    mutable std::array<OfCurve, LUT::count> curves;
};

/// Writes the value of each of `count` codes: values[codes[0]] to to[0], values[codes[1]] to to[stride], and
/// so on.
KEX_IMAGE_API void lookUp(float* to, const CodeTable::Code* codes, const float* values, std::size_t count,
                          std::size_t stride);

}  // namespace Kex::Image
