#include "Kex/Image/Row.h"

#include <algorithm>

namespace Kex::Image {

namespace {
constexpr std::size_t blackSamples = 0;
}

Row::Row(int x, int r) : left(x), right(std::max(x, r)) {
    storage[blackSamples].assign(static_cast<std::size_t>(width()), 0.0F);
    samples.fill(storage[blackSamples].data());
}

float* Row::writable(Channel z) {
    storage[z].resize(static_cast<std::size_t>(width()));
    samples[z] = storage[z].data();
    return storage[z].data();
}

void Row::refer(Channel z, const float* planarSamples) {
    samples[z] = planarSamples;
}

void Row::fill(Channel z, float value) {
    std::fill_n(writable(z), width(), value);
}

}  // namespace Kex::Image
