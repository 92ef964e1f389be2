#pragma once

/// Everything that carries this mark can be called across the border of libKexImage; everything else is
/// hidden.
#define KEX_IMAGE_API __attribute__((visibility("default")))

/// Lets the compiler check the arguments of a printf-style function. `this` counts as argument 1.
#define KEX_IMAGE_PRINTF(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
