#include "Kex/Image/Row.h"

#include <algorithm>

namespace Kex::Image {

namespace {
constexpr std::size_t blackSamples = 0;
}

Row::Row(int x, int r) : left(x), right(std::max(x, r)) {
    storage[blackSamples].assign(static_cast<std::size_t>(width()), 0.0F);
    floats.fill(storage[blackSamples].data());
}

float* Row::writable(Channel z) {
    storage[z].resize(static_cast<std::size_t>(width()));
    refer(z, storage[z].data());
    return storage[z].data();
}

void Row::refer(Channel z, const float* planarSamples) {
    floats[z] = planarSamples;
    codes[z] = nullptr;
    tables[z] = nullptr;
}

void Row::refer(Channel z, const CodeTable::Code* planarCodes, const CodeTable& table) {
    floats[z] = nullptr;
    codes[z] = planarCodes;
    tables[z] = &table;
}

const float* Row::lookedUp(Channel z) const {
    storage[z].resize(static_cast<std::size_t>(width()));
    lookUp(storage[z].data(), codes[z], tables[z]->linear(), storage[z].size(), 1);
    floats[z] = storage[z].data();
    return floats[z];
}

void Row::fill(Channel z, float value) {
    std::fill_n(writable(z), width(), value);
}

}  // namespace Kex::Image
