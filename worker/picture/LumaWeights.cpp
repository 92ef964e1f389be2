#include "worker/picture/LumaWeights.h"

namespace Morvane::Worker {

std::optional<LumaWeights> LumaWeights::of(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return LumaWeights{0.2126, 0.0722};
        case AVCOL_SPC_FCC:
            return LumaWeights{0.30, 0.11};
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return LumaWeights{0.299, 0.114};
        case AVCOL_SPC_SMPTE240M:
            return LumaWeights{0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return LumaWeights{0.2627, 0.0593};
        default:
            return std::nullopt;
    }
}

}  // namespace Morvane::Worker
