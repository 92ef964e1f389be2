#pragma once

#include "Kex/Image/Export.h"
#include "Kex/Image/Knob.h"

namespace Kex::Image {

/// What a node declares its knobs to: the host hands one to Writer::knobs, which calls it once a knob, in the
/// order in which a panel shows them. The three functions below refine the knob that was declared last.
class KEX_IMAGE_API Knob_Closure {
public:
    virtual ~Knob_Closure() = default;

    /// Declares one knob. The parameters are those of Knob::Declaration.
    virtual void operator()(KnobKind kind, KnobStorage storage, void* field, const char* name,
                            const char* label, const char* const* entries) = 0;

    virtual void tooltip(const char* text) = 0;
    virtual void setRange(double low, double high) = 0;
    /// Adds flags (KnobFlag) to those that the knob has.
    virtual void setFlags(int flags) = 0;
};

/// Text that explains the knob declared last; copied. Ignored when none has been declared yet, as are the
/// next two.
KEX_IMAGE_API void Tooltip(Knob_Closure& closure, const char* text);
/// What the slider of the knob declared last offers.
KEX_IMAGE_API void SetRange(Knob_Closure& closure, double low, double high);
/// Adds flags (KnobFlag, added up) to the knob declared last.
KEX_IMAGE_API void SetFlags(Knob_Closure& closure, int flags);

}  // namespace Kex::Image
