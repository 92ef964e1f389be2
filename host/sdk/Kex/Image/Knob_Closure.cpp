#include "Kex/Image/Knob_Closure.h"

namespace Kex::Image {

void Tooltip(Knob_Closure& closure, const char* text) {
    closure.tooltip(text);
}

void SetRange(Knob_Closure& closure, double low, double high) {
    closure.setRange(low, high);
}

void SetFlags(Knob_Closure& closure, int flags) {
    closure.setFlags(flags);
}

}  // namespace Kex::Image
