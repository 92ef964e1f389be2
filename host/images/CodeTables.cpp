#include "host/images/CodeTables.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <utility>
#include <vector>

#include "host/images/ExrKernels.h"

namespace Corvel {

using Kex::Image::CodeTable;

const CodeTable& halfFloats() {
    static const CodeTable table([] {
        std::vector<std::uint16_t> codes(std::size_t{65536});
        std::iota(codes.begin(), codes.end(), std::uint16_t{0});
        std::vector<float> values(codes.size());
        widenHalves(codes.data(), values.data(), codes.size());
        return values;
    }());
    return table;
}

const CodeTable& wholeNumbers(unsigned highest, const Kex::Image::LUT& curve) {
    static std::mutex mutex;
    static std::map<std::pair<unsigned, int>, std::unique_ptr<const CodeTable>> tables;
    const std::lock_guard lock(mutex);
    std::unique_ptr<const CodeTable>& table = tables[{highest, curve.type()}];
    if (!table) {
        std::vector<float> values(std::size_t{highest} + 1);
        for (unsigned code = 0; code <= highest; ++code) {
            values[code] = static_cast<float>(code) / static_cast<float>(highest);
        }
        if (curve.type() != 0) {
            curve.toLinear(values.data(), values.data(), values.size(), 1);
        }
        table = std::make_unique<const CodeTable>(std::move(values));
    }
    return *table;
}

}  // namespace Corvel
